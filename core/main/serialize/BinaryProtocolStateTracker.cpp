#include "core/main/serialize/BinaryProtocolStateTracker.h"

#include <utility>
#include <variant>

#include "lum/core/Check.h"

namespace lum::core {

class BinaryProtocolStateTracker::ListProtocolState final : public BinaryProtocolState {
public:
    explicit ListProtocolState(BinaryListType type)
        : m_type(type), m_segmentCount(CountSegments(type)) {}

    void OnBeginList() override { OnData(); }
    void OnBeginDictionary() override { OnData(); }
    void OnBeginKeySet() override { OnData(); }
    void OnData() override { OnArrayData(1); }
    void OnArrayData(lumsize_t count) override {
        LUM_CHECK(m_state == State::ExpectData, LumError::ListDataExpected);
        m_count -= count;
    }

    void BeginListData(lumsize_t count) override {
        LUM_CHECK(m_state == State::ExpectListStart, LumError::ListStartExpected);
        LUM_CHECK(m_segmentCount > 0, LumError::ListSegmentCountMismatch);
        if (m_type == BinaryListType::ArrayWithSpecials && m_lastDataCount != 0) {
            LUM_CHECK(count == m_lastDataCount, LumError::ListSegmentCountMismatch);
        }
        const bool isConstant = m_type.GetContainerType() == BinaryContainerType::ConstantArray;
        m_count = isConstant ? 1 : count;
        m_lastDataCount = count;
        --m_segmentCount;
        m_state = State::ExpectData;
        m_isInSegment = true;
    }
    void EndListData() override {
        LUM_CHECK(m_state == State::ExpectData, LumError::ListDataExpected);
        LUM_CHECK(m_count == 0, LumError::ListValueCountMismatch);
        m_state = State::ExpectListStart;
        m_isInSegment = false;
    }
    void EndList() override {
        LUM_CHECK(m_segmentCount == 0, LumError::ListSegmentCountMismatch);
        LUM_CHECK(m_state == State::ExpectListStart, LumError::ListStartExpected);
    }

private:
    enum class State : unsigned char { ExpectListStart = 0, ExpectData = 1 };

    static lumsize_t CountSegments(BinaryListType type) {
        LUM_CHECK(type.GetContainerType() > BinaryContainerType::INVALID &&
                      type.GetContainerType() < BinaryContainerType::COUNT,
                  LumError::InvalidListType);
        switch (type.GetContainerType()) {
            case BinaryContainerType::CompositeArray:
                return type.HasIndices() ? 4 : 3;
            case BinaryContainerType::ByteBlob:
            case BinaryContainerType::ConstantArray:
                return 1;
            default:
                return type.HasSpecials() ? 2 : 1;
        }
    }

    BinaryListType m_type;
    lumsize_t m_segmentCount;       // Segments that are yet to be opened.
    lumsize_t m_lastDataCount = 0;  // Items of the last segment.
    State m_state = State::ExpectListStart;
};

class BinaryProtocolStateTracker::DictionaryProtocolState final : public BinaryProtocolState {
public:
    explicit DictionaryProtocolState(lumsize_t count) { m_count = count; }

    void OnBeginList() override { OnData(); }
    void OnBeginDictionary() override { OnData(); }
    void OnBeginTable() override { OnData(); }
    void OnBeginKeySet() override { OnData(); }
    void OnKey() override {
        LUM_CHECK(m_state == State::ExpectKey, LumError::ProtocolKeyExpected);
        m_state = State::ExpectTypeInfo;
    }
    void OnKeyType() override {
        LUM_CHECK(m_state == State::ExpectTypeInfo, LumError::DictionaryTypeInfoExpected);
        m_state = State::ExpectValue;
    }
    void OnData() override {
        LUM_CHECK(m_state == State::ExpectValue, LumError::DictionaryDataExpected);
        m_state = State::ExpectKey;
        --m_count;
    }
    void EndDictionary() override {
        LUM_CHECK(m_state == State::ExpectKey, LumError::ProtocolKeyExpected);
        LUM_CHECK(m_count == 0, LumError::DictionaryValueCountMismatch);
    }

private:
    enum class State : unsigned char { ExpectKey = 0, ExpectTypeInfo = 1, ExpectValue = 2 };

    State m_state = State::ExpectKey;
};

class BinaryProtocolStateTracker::TableProtocolState final : public BinaryProtocolState {
public:
    explicit TableProtocolState(lumsize_t count) { m_count = count; }

    void OnBeginList() override {
        LUM_CHECK(m_state == State::BeginNestedList, LumError::ListDataExpected);
        if (m_leadingLists > 0) {
            --m_leadingLists;
            if (m_leadingLists > 0) {
                return;
            }
        } else {
            --m_count;
        }
        m_state = m_count > 0 ? State::ExpectKey : State::EndCurrentTable;
    }
    void OnKey() override {
        LUM_CHECK(m_state == State::ExpectKey, LumError::ListDataExpected);
        m_state = State::ExpectTypeInfo;
    }
    void OnKeyType() override {
        LUM_CHECK(m_state == State::ExpectTypeInfo, LumError::DictionaryTypeInfoExpected);
        m_state = State::BeginNestedList;
    }
    void EndTable() override {
        LUM_CHECK(m_state == State::EndCurrentTable, LumError::ProtocolKeyExpected);
        LUM_CHECK(m_count == 0, LumError::DictionaryValueCountMismatch);
    }

private:
    enum class State : unsigned char {
        BeginNestedList = 0,
        ExpectKey = 1,
        ExpectTypeInfo = 2,
        EndCurrentTable = 4,
    };

    State m_state = State::BeginNestedList;
    lumsize_t m_leadingLists = 2;  // Lists without a key that are due in front of the columns.
};

class BinaryProtocolStateTracker::KeySetProtocolState final : public BinaryProtocolState {
public:
    explicit KeySetProtocolState(BinaryKeySetType type) : m_type(type) {
        LUM_INVARIANT(m_type == BinaryKeySetType::NoSpecialKeys ||
                          m_type == BinaryKeySetType::WithSpecialKeys,
                      LumError::Unspecified);
        m_segmentCount = m_type == BinaryKeySetType::WithSpecialKeys ? 2 : 1;
    }

    // Where a key is due, a list is a tuple that is the key.
    void OnBeginList() override {
        if (m_state == State::ExpectKey) {
            OnKey();
        } else {
            OnData();
        }
    }
    void OnBeginDictionary() override { OnData(); }
    void OnBeginKeySet() override { OnData(); }
    void BeginListData(lumsize_t count) override {
        LUM_CHECK(m_state == State::ExpectListStart, LumError::ListStartExpected);
        LUM_CHECK(m_segmentCount > 0, LumError::ListSegmentCountMismatch);
        m_count = count;
        --m_segmentCount;
        m_state = State::ExpectKey;
    }
    void EndListData() override {
        LUM_CHECK(m_state == State::ExpectKey, LumError::ListDataExpected);
        LUM_CHECK(m_count == 0, LumError::ListValueCountMismatch);
        m_state = State::ExpectListStart;
    }
    void OnKey() override {
        LUM_CHECK(m_state == State::ExpectKey, LumError::KeySetKeyExpected);
        m_state = State::ExpectValue;
    }
    void OnData() override {
        LUM_CHECK(m_state == State::ExpectValue, LumError::KeySetDataExpected);
        m_state = State::ExpectKey;
        --m_count;
    }
    // May leave the segment of the special keys out.
    void EndKeySet() override {
        LUM_CHECK(m_state == State::ExpectListStart, LumError::KeySetKeyExpected);
        LUM_CHECK(m_count == 0, LumError::KeySetValueCountMismatch);
    }

private:
    enum class State : unsigned char { ExpectListStart = 0, ExpectKey = 1, ExpectValue = 2 };

    BinaryKeySetType m_type;
    State m_state = State::ExpectListStart;
    lumsize_t m_segmentCount;  // Segments that are yet to be opened.
};

// A place of the stack, for a state of any kind.
struct BinaryProtocolStateTracker::AnyState {
    template <typename State, typename... Arguments>
    explicit AnyState(std::in_place_type_t<State> kind, Arguments... arguments)
        : state(kind, arguments...) {}

    BinaryProtocolState& Get() noexcept {
        return std::visit([](BinaryProtocolState& any) -> BinaryProtocolState& { return any; },
                          state);
    }

    std::variant<ListProtocolState, DictionaryProtocolState, TableProtocolState,
                 KeySetProtocolState>
        state;
};

BinaryProtocolStateTracker::BinaryProtocolStateTracker() = default;
BinaryProtocolStateTracker::~BinaryProtocolStateTracker() = default;

void BinaryProtocolStateTracker::BinaryProtocolState::Refuse() {
    LUM_FAIL(LumError::ProtocolStateMismatch);
}

template <typename State, typename... Arguments>
void BinaryProtocolStateTracker::Push(Arguments... arguments) {
    AnyState& pushed = m_states.emplace_back(std::in_place_type<State>, arguments...);
    m_top = &std::get<State>(pushed.state);
}

void BinaryProtocolStateTracker::Pop() noexcept {
    m_states.pop_back();
    m_top = m_states.empty() ? nullptr : &m_states.back().Get();
}

void BinaryProtocolStateTracker::BeginListType(BinaryListType type) {
    AppendList();
    Push<ListProtocolState>(type);
}

void BinaryProtocolStateTracker::BeginDictionaryType(lumsize_t count) {
    if (HasStates()) {
        m_top->OnBeginDictionary();
    }
    Push<DictionaryProtocolState>(count);
}

void BinaryProtocolStateTracker::BeginTableType(lumsize_t count) {
    if (HasStates()) {
        m_top->OnBeginTable();
    }
    Push<TableProtocolState>(count);
}

void BinaryProtocolStateTracker::BeginKeySetType(BinaryKeySetType type) {
    if (HasStates()) {
        m_top->OnBeginKeySet();
    }
    Push<KeySetProtocolState>(type);
}

void BinaryProtocolStateTracker::EndListType() {
    GetTop().EndList();
    Pop();
}

void BinaryProtocolStateTracker::EndDictionaryType() {
    GetTop().EndDictionary();
    Pop();
}

void BinaryProtocolStateTracker::EndTableType() {
    GetTop().EndTable();
    Pop();
}

void BinaryProtocolStateTracker::EndKeySetType() {
    GetTop().EndKeySet();
    Pop();
}

}  // namespace lum::core
