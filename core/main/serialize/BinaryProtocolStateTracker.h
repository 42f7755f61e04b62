#pragma once

#include <vector>

#include "lum/core/Check.h"
#include "lum/core/serialize/BinaryProtocol.h"
#include "lum/core/utility/LumSize.h"

namespace lum::core {

// Checks that a stream of events of the binary form is well formed. The creator and the reader of
// payloads feed one each with the same events in the same order: so the one cannot write what the
// other refuses, and damage shows as soon as the structure goes wrong.
//
// A stack of states, one for each open container, which count and hold no data. What was written
// is not compared item by item: counts may run below zero and wrap, and are looked at when their
// segment or container ends.
//
// Threads: one at a time.
// Errors: LumRuntimeException, reported; ProtocolStateMismatch for an event that its state never
//   takes, else the code that names what was due.
class BinaryProtocolStateTracker {
public:
    BinaryProtocolStateTracker();
    ~BinaryProtocolStateTracker();
    BinaryProtocolStateTracker(const BinaryProtocolStateTracker&) = delete;
    BinaryProtocolStateTracker& operator=(const BinaryProtocolStateTracker&) = delete;

    // The container outside is asked first, then the new one begins.
    // Errors: InvalidListType for a list; LumLogicException with Unspecified for a key set.
    void BeginListType(BinaryListType type);
    void BeginDictionaryType(lumsize_t count);
    void BeginTableType(lumsize_t count);
    void BeginKeySetType(BinaryKeySetType type);
    // A container that refuses to end stays open.
    void EndListType();
    void EndDictionaryType();
    void EndTableType();
    void EndKeySetType();
    // A whole list, with all events that belong to it.
    void AppendList() {
        if (HasStates()) {
            m_top->OnBeginList();
        }
    }
    void BeginListData(lumsize_t count) { GetTop().BeginListData(count); }
    void EndListData() { GetTop().EndListData(); }
    void AppendKey() { GetTop().OnKey(); }
    void AppendKeyType() { GetTop().OnKeyType(); }
    // Most events are items of lists, which are only counted.
    void AppendData() {
        BinaryProtocolState& top = GetTop();
        if (top.m_isInSegment) {
            --top.m_count;
        } else {
            top.OnData();
        }
    }
    void AppendArrayData(lumsize_t count) { GetTop().OnArrayData(count); }

    bool HasStates() const noexcept { return m_top != nullptr; }

private:
    // One open container, and what it says to each event. An event that no override takes is
    // refused.
    class BinaryProtocolState {
    public:
        BinaryProtocolState() = default;
        BinaryProtocolState(const BinaryProtocolState&) = default;
        BinaryProtocolState& operator=(const BinaryProtocolState&) = default;
        virtual ~BinaryProtocolState() = default;

        // A container begins inside of this one.
        virtual void OnBeginList() = 0;
        virtual void OnBeginDictionary() { Refuse(); }
        virtual void OnBeginTable() { Refuse(); }
        virtual void OnBeginKeySet() { Refuse(); }
        // This container ends.
        virtual void EndList() { Refuse(); }
        virtual void EndDictionary() { Refuse(); }
        virtual void EndTable() { Refuse(); }
        virtual void EndKeySet() { Refuse(); }

        virtual void BeginListData(lumsize_t) { Refuse(); }
        virtual void EndListData() { Refuse(); }
        virtual void OnKey() { Refuse(); }
        virtual void OnKeyType() { Refuse(); }
        virtual void OnData() { Refuse(); }
        virtual void OnArrayData(lumsize_t) { Refuse(); }

        lumsize_t m_count = 0;       // Items, entries or columns that are due.
        bool m_isInSegment = false;  // Then OnData does nothing but count.

    protected:
        [[noreturn]] static void Refuse();
    };
    class ListProtocolState;
    class DictionaryProtocolState;
    class TableProtocolState;
    class KeySetProtocolState;
    struct AnyState;

    BinaryProtocolState& GetTop() {
        LUM_CHECK_TEXT("!(m_states.empty())", HasStates(), LumError::ProtocolStateMismatch);
        return *m_top;
    }
    template <typename State, typename... Arguments>
    void Push(Arguments... arguments);
    void Pop() noexcept;

    // Not one object of the heap for each container: a column of tuples opens one a row.
    std::vector<AnyState> m_states;
    BinaryProtocolState* m_top = nullptr;  // The last of them.
};

}  // namespace lum::core
