#include "core/main/serialize/BinaryProtocolStateTracker.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/LumErrorMatchers.h"
#include "tests/support/Random.h"

namespace lum::core {
namespace {

// An event as a word: list=9 (the byte of the type, decimal) ... /list, data=2 ... /data for
// segments, dict=1 ... /dict, table=1 ... /table, keys=2 ... /keys, and key, type, value, block=3.
struct Event {
    std::string name;
    unsigned int number = 0;
};

std::vector<Event> ParseScript(const std::string& script) {
    std::vector<Event> events;
    std::istringstream words(script);
    for (std::string word; words >> word;) {
        const std::size_t sign = word.find('=');
        const bool hasNumber = sign != std::string::npos;
        events.push_back(
            {word.substr(0, sign),
             hasNumber ? static_cast<unsigned int>(std::stoul(word.substr(sign + 1))) : 0});
    }
    return events;
}

std::string ToScript(const std::vector<Event>& events) {
    std::string script;
    for (const Event& event : events) {
        script += event.name + "=" + std::to_string(event.number) + " ";
    }
    return script;
}

void Feed(BinaryProtocolStateTracker& tracker, const Event& event) {
    const std::string& name = event.name;
    if (name == "list") {
        tracker.BeginListType(BinaryListType(static_cast<unsigned char>(event.number)));
    } else if (name == "dict") {
        tracker.BeginDictionaryType(event.number);
    } else if (name == "table") {
        tracker.BeginTableType(event.number);
    } else if (name == "keys") {
        tracker.BeginKeySetType(static_cast<BinaryKeySetType>(event.number));
    } else if (name == "data") {
        tracker.BeginListData(event.number);
    } else if (name == "/list") {
        tracker.EndListType();
    } else if (name == "/dict") {
        tracker.EndDictionaryType();
    } else if (name == "/table") {
        tracker.EndTableType();
    } else if (name == "/keys") {
        tracker.EndKeySetType();
    } else if (name == "/data") {
        tracker.EndListData();
    } else if (name == "key") {
        tracker.AppendKey();
    } else if (name == "type") {
        tracker.AppendKeyType();
    } else if (name == "value") {
        tracker.AppendData();
    } else if (name == "block") {
        tracker.AppendArrayData(event.number);
    } else {
        std::abort();
    }
}

TEST(BinaryProtocolStateTrackerTest, Accepts) {
    const char* const scripts[] = {
        "",
        "dict=0 /dict",
        "dict=2 key type value key type dict=1 key type value /dict /dict",
        "list=1 data=2 value value /data /list",
        "list=1 data=3 block=2 block=0 value /data /list",
        "list=9 data=1 value /data data=1 block=1 /data /list",
        // A first segment without items switches the comparison of counts off; so does an order.
        "list=9 data=0 /data data=3 block=3 /data /list",
        "list=41 data=1 value /data data=3 block=3 /data /list",
        "list=13 data=2 block=2 /data data=1 value /data /list",
        "list=6 data=1 value /data /list",
        "list=14 data=2 block=2 /data data=0 /data /list",
        "list=2 data=4 block=4 /data /list",
        "list=10 data=0 /data /list",
        // One item, whatever the count.
        "list=4 data=1000 value /data /list",
        "list=12 data=0 value /data /list",
        "list=3 data=2 block=2 /data data=1 value /data data=0 /data /list",
        "list=19 data=1 value /data data=1 value /data data=1 value /data data=5 block=5 /data "
        "/list",
        // Indices count for composites alone.
        "list=17 data=0 /data /list",
        // Containers are items.
        "list=1 data=4 list=6 data=0 /data /list dict=0 /dict keys=1 data=0 /data /keys value "
        "/data /list",
        "table=0 list=1 data=0 /data /list list=1 data=0 /data /list /table",
        "table=1 list=1 data=0 /data /list list=1 data=0 /data /list key type list=1 data=1 value "
        "/data /list /table",
        "dict=1 key type table=0 list=1 data=0 /data /list list=4 data=0 value /data /list /table "
        "/dict",
        "keys=1 data=2 key value key dict=0 /dict /data /keys",
        "keys=2 data=0 /data data=1 key value /data /keys",
        "keys=2 data=0 /data /keys",
        "keys=2 /keys",
        // A list where a key is due is the key.
        "keys=1 data=2 list=6 data=0 /data /list list=6 data=0 /data /list key keys=1 data=0 /data "
        "/keys /data /keys",
        // Counts wrap, and nobody notices where they wrap to zero.
        "list=1 data=1 block=4294967295 value value /data /list",
    };
    for (const char* const script : scripts) {
        SCOPED_TRACE(script);
        BinaryProtocolStateTracker tracker;
        for (const Event& event : ParseScript(script)) {
            Feed(tracker, event);
        }
        EXPECT_FALSE(tracker.HasStates());
    }
}

struct Refusal {
    std::string script;  // The last event is refused.
    LumError error;
    std::string condition = {};
    bool isLogic = false;
};

TEST(BinaryProtocolStateTrackerTest, Refuses) {
    const std::string isData = "(m_state == State::ExpectData)";
    const std::string isStart = "(m_state == State::ExpectListStart)";
    const std::string isKey = "(m_state == State::ExpectKey)";
    const std::string isType = "(m_state == State::ExpectTypeInfo)";
    const std::string isValue = "(m_state == State::ExpectValue)";
    const std::string isNested = "(m_state == State::BeginNestedList)";
    const std::string isEnd = "(m_state == State::EndCurrentTable)";
    const std::string isNone = "(m_count == 0)";
    const std::string isListType =
        "(type.GetContainerType() > BinaryContainerType::INVALID && type.GetContainerType() < "
        "BinaryContainerType::COUNT)";
    const std::string lists = "list=1 data=0 /data /list list=1 data=0 /data /list ";
    const Refusal cases[] = {
        // Lists.
        {"list=0", LumError::InvalidListType, isListType},
        {"list=7", LumError::InvalidListType, isListType},
        {"list=248", LumError::InvalidListType, isListType},
        {"list=1 value", LumError::ListDataExpected, isData},
        {"list=1 block=0", LumError::ListDataExpected, isData},
        {"list=1 list=1", LumError::ListDataExpected, isData},
        {"list=1 list=0", LumError::ListDataExpected, isData},
        {"list=1 dict=0", LumError::ListDataExpected, isData},
        {"list=1 keys=1", LumError::ListDataExpected, isData},
        {"list=1 keys=3", LumError::ListDataExpected, isData},
        {"list=1 /data", LumError::ListDataExpected, isData},
        {"list=1 data=0 data=0", LumError::ListStartExpected, isStart},
        {"list=1 data=0 /data data=0", LumError::ListSegmentCountMismatch, "(m_segmentCount > 0)"},
        {"list=10 data=0 /data data=0", LumError::ListSegmentCountMismatch, "(m_segmentCount > 0)"},
        {"list=4 data=5 value /data data=5", LumError::ListSegmentCountMismatch,
         "(m_segmentCount > 0)"},
        {"list=3 data=0 /data data=0 /data data=0 /data data=0", LumError::ListSegmentCountMismatch,
         "(m_segmentCount > 0)"},
        {"list=9 data=3 block=3 /data data=2", LumError::ListSegmentCountMismatch,
         "(count == m_lastDataCount)"},
        {"list=1 data=2 value /data", LumError::ListValueCountMismatch, isNone},
        {"list=1 data=4 block=5 /data", LumError::ListValueCountMismatch, isNone},
        {"list=1 data=0 value /data", LumError::ListValueCountMismatch, isNone},
        {"list=4 data=2 value value /data", LumError::ListValueCountMismatch, isNone},
        {"list=4 data=2 /data", LumError::ListValueCountMismatch, isNone},
        {"list=1 /list", LumError::ListSegmentCountMismatch, "(m_segmentCount == 0)"},
        {"list=9 data=0 /list", LumError::ListSegmentCountMismatch, "(m_segmentCount == 0)"},
        {"list=1 data=0 /list", LumError::ListStartExpected, isStart},
        {"list=1 data=1 table=0", LumError::ProtocolStateMismatch},
        {"list=1 /dict", LumError::ProtocolStateMismatch},
        {"list=1 /table", LumError::ProtocolStateMismatch},
        {"list=1 /keys", LumError::ProtocolStateMismatch},
        {"list=1 data=1 key", LumError::ProtocolStateMismatch},
        {"list=1 data=1 type", LumError::ProtocolStateMismatch},
        // Dictionaries.
        {"dict=1 type", LumError::DictionaryTypeInfoExpected, isType},
        {"dict=1 key type type", LumError::DictionaryTypeInfoExpected, isType},
        {"dict=1 key key", LumError::ProtocolKeyExpected, isKey},
        {"dict=1 key type key", LumError::ProtocolKeyExpected, isKey},
        {"dict=1 value", LumError::DictionaryDataExpected, isValue},
        {"dict=1 key value", LumError::DictionaryDataExpected, isValue},
        {"dict=1 list=1", LumError::DictionaryDataExpected, isValue},
        {"dict=1 key dict=0", LumError::DictionaryDataExpected, isValue},
        {"dict=1 table=0", LumError::DictionaryDataExpected, isValue},
        {"dict=1 keys=1", LumError::DictionaryDataExpected, isValue},
        {"dict=1 key /dict", LumError::ProtocolKeyExpected, isKey},
        {"dict=1 key type /dict", LumError::ProtocolKeyExpected, isKey},
        {"dict=1 /dict", LumError::DictionaryValueCountMismatch, isNone},
        {"dict=0 key type value /dict", LumError::DictionaryValueCountMismatch, isNone},
        {"dict=1 key type list=0", LumError::InvalidListType, isListType},
        {"dict=1 /list", LumError::ProtocolStateMismatch},
        {"dict=1 /table", LumError::ProtocolStateMismatch},
        {"dict=1 /keys", LumError::ProtocolStateMismatch},
        {"dict=1 data=0", LumError::ProtocolStateMismatch},
        {"dict=1 /data", LumError::ProtocolStateMismatch},
        {"dict=1 key type block=1", LumError::ProtocolStateMismatch},
        // Tables.
        {"table=1 key", LumError::ListDataExpected, isKey},
        {"table=1 list=1 data=0 /data /list key", LumError::ListDataExpected, isKey},
        {"table=1 list=1 key", LumError::ProtocolStateMismatch},
        {"table=1 " + lists + "list=1", LumError::ListDataExpected, isNested},
        {"table=0 " + lists + "list=1", LumError::ListDataExpected, isNested},
        {"table=0 " + lists + "key", LumError::ListDataExpected, isKey},
        {"table=1 " + lists + "key list=1", LumError::ListDataExpected, isNested},
        {"table=1 type", LumError::DictionaryTypeInfoExpected, isType},
        {"table=1 " + lists + "key type type", LumError::DictionaryTypeInfoExpected, isType},
        {"table=0 /table", LumError::ProtocolKeyExpected, isEnd},
        {"table=1 " + lists + "/table", LumError::ProtocolKeyExpected, isEnd},
        {"table=1 " + lists + "key type /table", LumError::ProtocolKeyExpected, isEnd},
        {"table=1 " + lists + "key type value", LumError::ProtocolStateMismatch},
        {"table=1 value", LumError::ProtocolStateMismatch},
        {"table=1 block=1", LumError::ProtocolStateMismatch},
        {"table=1 dict=0", LumError::ProtocolStateMismatch},
        {"table=1 table=0", LumError::ProtocolStateMismatch},
        {"table=1 keys=1", LumError::ProtocolStateMismatch},
        {"table=1 data=0", LumError::ProtocolStateMismatch},
        {"table=1 /data", LumError::ProtocolStateMismatch},
        {"table=1 /list", LumError::ProtocolStateMismatch},
        {"table=1 /dict", LumError::ProtocolStateMismatch},
        {"table=1 /keys", LumError::ProtocolStateMismatch},
        // Key sets.
        {"keys=0", LumError::Unspecified,
         "(m_type == BinaryKeySetType::NoSpecialKeys || m_type == "
         "BinaryKeySetType::WithSpecialKeys)",
         true},
        {"keys=3", LumError::Unspecified,
         "(m_type == BinaryKeySetType::NoSpecialKeys || m_type == "
         "BinaryKeySetType::WithSpecialKeys)",
         true},
        {"keys=1 key", LumError::KeySetKeyExpected, isKey},
        {"keys=1 data=1 key key", LumError::KeySetKeyExpected, isKey},
        {"keys=1 value", LumError::KeySetDataExpected, isValue},
        {"keys=1 data=1 value", LumError::KeySetDataExpected, isValue},
        {"keys=1 list=6", LumError::KeySetDataExpected, isValue},
        {"keys=1 data=1 dict=0", LumError::KeySetDataExpected, isValue},
        {"keys=1 data=1 keys=1", LumError::KeySetDataExpected, isValue},
        {"keys=1 data=0 data=0", LumError::ListStartExpected, isStart},
        {"keys=1 data=0 /data data=0", LumError::ListSegmentCountMismatch, "(m_segmentCount > 0)"},
        {"keys=1 /data", LumError::ListDataExpected, isKey},
        {"keys=1 data=1 key /data", LumError::ListDataExpected, isKey},
        {"keys=1 data=2 key value /data", LumError::ListValueCountMismatch, isNone},
        {"keys=1 data=0 key value /data", LumError::ListValueCountMismatch, isNone},
        {"keys=1 data=0 /keys", LumError::KeySetKeyExpected, isStart},
        {"keys=1 data=1 key /keys", LumError::KeySetKeyExpected, isStart},
        {"keys=1 data=1 key table=0", LumError::ProtocolStateMismatch},
        {"keys=1 /list", LumError::ProtocolStateMismatch},
        {"keys=1 /dict", LumError::ProtocolStateMismatch},
        {"keys=1 /table", LumError::ProtocolStateMismatch},
        {"keys=1 data=1 type", LumError::ProtocolStateMismatch},
        {"keys=1 data=1 block=1", LumError::ProtocolStateMismatch},
    };
    for (const Refusal& refusal : cases) {
        SCOPED_TRACE(refusal.script);
        BinaryProtocolStateTracker tracker;
        std::vector<Event> events = ParseScript(refusal.script);
        const Event last = events.back();
        events.pop_back();
        for (const Event& event : events) {
            Feed(tracker, event);
        }
        EXPECT_TRUE(test::FailsAs({refusal.error, "", true, refusal.condition, refusal.isLogic},
                                  [&] { Feed(tracker, last); }));
        EXPECT_EQ(tracker.HasStates(), !events.empty());
    }
    for (const char* const event : {"/list", "/dict", "/table", "/keys", "data=0", "/data", "key",
                                    "type", "value", "block=1"}) {
        SCOPED_TRACE(event);
        BinaryProtocolStateTracker tracker;
        EXPECT_LUM_REPORT(ProtocolStateMismatch, "", "!(m_states.empty())",
                          Feed(tracker, ParseScript(event).front()));
    }
}

TEST(BinaryProtocolStateTrackerTest, StaysOpenWhereItRefusesToEnd) {
    BinaryProtocolStateTracker tracker;
    for (const Event& event : ParseScript("dict=1 key type list=1 data=1")) {
        Feed(tracker, event);
    }
    EXPECT_LUM_ERROR(ListStartExpected, "", tracker.EndListType());
    EXPECT_LUM_ERROR(ListValueCountMismatch, "", tracker.EndListData());
    for (const Event& event : ParseScript("value /data /list /dict")) {
        Feed(tracker, event);
    }
    EXPECT_FALSE(tracker.HasStates());
}

// Sequences from the grammar, some of them damaged, against a reader of the grammar ---------------

class ScriptMaker {
public:
    explicit ScriptMaker(test::Random& random) : m_random(random) {}

    std::vector<Event> Make() {
        m_events.clear();
        AddContainer(3);
        return m_events;
    }

    Event MakeEvent() {
        const char* const names[] = {"list",   "/list", "dict",  "/dict", "table",
                                     "/table", "keys",  "/keys", "data",  "/data",
                                     "key",    "type",  "value", "block"};
        return {m_random.OneOf(names), MakeNumber()};
    }

private:
    unsigned int MakeNumber() { return static_cast<unsigned int>(m_random.Below(5)); }

    void Add(const std::string& name, unsigned int number = 0) {
        m_events.push_back({name, number});
    }

    void AddContainer(unsigned int depth) {
        switch (m_random.Below(4)) {
            case 0:
                return AddDictionary(depth);
            case 1:
                return AddKeySet(depth);
            case 2:
                return AddTable(depth);
            default:
                return AddList(depth);
        }
    }

    // What may stand in a list or a key set: a table may not.
    void AddItem(unsigned int depth) {
        switch (depth == 0 ? 0 : m_random.Below(6)) {
            case 3:
                return AddDictionary(depth - 1);
            case 4:
                return AddKeySet(depth - 1);
            case 5:
                return AddList(depth - 1);
            default:
                return Add("value");
        }
    }

    void AddDictionary(unsigned int depth) {
        const unsigned int count = MakeNumber() / 2;
        Add("dict", count);
        for (unsigned int i = 0; i < count; ++i) {
            Add("key");
            Add("type");
            if (depth != 0 && m_random.Below(6) == 0) {
                AddTable(depth - 1);
            } else {
                AddItem(depth);
            }
        }
        Add("/dict");
    }

    void AddTable(unsigned int depth) {
        const unsigned int count = MakeNumber() / 2;
        Add("table", count);
        AddList(0);
        AddList(0);
        for (unsigned int i = 0; i < count; ++i) {
            Add("key");
            Add("type");
            AddList(depth == 0 ? 0 : depth - 1);
        }
        Add("/table");
    }

    void AddKeySet(unsigned int depth) {
        const auto type = static_cast<unsigned int>(1 + m_random.Below(2));
        Add("keys", type);
        for (unsigned int segment = 0; segment < type; ++segment) {
            const unsigned int count = MakeNumber();
            Add("data", count);
            for (unsigned int i = 0; i < count; ++i) {
                if (m_random.Below(4) == 0) {
                    AddList(0);
                } else {
                    Add("key");
                }
                AddItem(depth);
            }
            Add("/data");
        }
        Add("/keys");
    }

    void AddList(unsigned int depth) {
        const unsigned int types[] = {1, 9, 2, 3, 19, 4, 12, 5, 13, 6, 14, 33, 41};
        const unsigned int type = m_random.OneOf(types);
        const unsigned int container = type % 8;
        const bool hasTwo = container != 2 && container != 3 && container != 4 && (type & 8) != 0;
        const unsigned int segments = container == 3 ? (type == 19 ? 4 : 3) : hasTwo ? 2 : 1;
        const unsigned int sameCount = MakeNumber();
        Add("list", type);
        for (unsigned int segment = 0; segment < segments; ++segment) {
            const unsigned int count = type == 9 ? sameCount : MakeNumber();
            Add("data", count);
            AddItems(container == 4 ? 1 : count, depth);
            Add("/data");
        }
        Add("/list");
    }

    void AddItems(unsigned int count, unsigned int depth) {
        while (count > 0) {
            const auto block = static_cast<unsigned int>(m_random.Below(count + 1));
            if (m_random.Below(3) == 0) {
                Add("block", block);
                count -= block;
            } else {
                AddItem(depth);
                --count;
            }
        }
    }

    test::Random& m_random;
    std::vector<Event> m_events;
};

// Whether a sequence is well formed, by descent, with none of the tracker's states.
class ScriptJudge {
public:
    explicit ScriptJudge(const std::vector<Event>& events) : m_events(events) {}

    // Containers one behind the other, all of them ended.
    bool IsWellFormed() {
        while (m_isGood && m_position < m_events.size()) {
            Container();
        }
        return m_isGood;
    }

private:
    const Event* Peek() const {
        return m_position < m_events.size() ? &m_events[m_position] : nullptr;
    }
    bool IsNext(const char* name) const { return Peek() != nullptr && Peek()->name == name; }
    unsigned int Take(const char* name) {
        m_isGood = m_isGood && IsNext(name);
        return m_isGood ? m_events[m_position++].number : 0;
    }

    void Container() {
        if (IsNext("dict")) {
            const unsigned int count = Take("dict");
            unsigned int taken = 0;
            for (; m_isGood && IsNext("key"); ++taken) {
                Take("key");
                Take("type");
                IsNext("value") ? static_cast<void>(Take("value")) : Container();
            }
            m_isGood = m_isGood && taken == count;
            Take("/dict");
        } else if (IsNext("table")) {
            const unsigned int count = Take("table");
            List();
            List();
            for (unsigned int i = 0; m_isGood && i < count; ++i) {
                Take("key");
                Take("type");
                List();
            }
            Take("/table");
        } else if (IsNext("keys")) {
            KeySet();
        } else {
            List();
        }
    }

    // An item other than a table, which no segment holds.
    void Item() {
        if (IsNext("value")) {
            Take("value");
        } else {
            m_isGood = m_isGood && !IsNext("table");
            if (m_isGood) {
                Container();
            }
        }
    }

    void KeySet() {
        const unsigned int type = Take("keys");
        m_isGood = m_isGood && (type == 1 || type == 2);
        // Segments may be missing at the end.
        for (unsigned int segment = 0; m_isGood && segment < type && IsNext("data"); ++segment) {
            const unsigned int count = Take("data");
            unsigned int taken = 0;
            for (; m_isGood && (IsNext("key") || IsNext("list")); ++taken) {
                IsNext("key") ? static_cast<void>(Take("key")) : List();
                Item();
            }
            m_isGood = m_isGood && taken == count;
            Take("/data");
        }
        Take("/keys");
    }

    void List() {
        const unsigned int type = Take("list");
        const unsigned int segmentsOf[] = {0,
                                           (type & 8) ? 2u : 1u,
                                           1,
                                           (type & 16) ? 4u : 3u,
                                           1,
                                           (type & 8) ? 2u : 1u,
                                           (type & 8) ? 2u : 1u,
                                           0};
        m_isGood = m_isGood && segmentsOf[type % 8] != 0;
        unsigned int lastCount = 0;
        for (unsigned int left = segmentsOf[type % 8]; m_isGood && left > 0; --left) {
            const unsigned int count = Take("data");
            m_isGood = m_isGood && (type != 9 || lastCount == 0 || count == lastCount);
            lastCount = count;
            unsigned long long taken = 0;
            while (m_isGood && !IsNext("/data")) {
                if (IsNext("block")) {
                    taken += Take("block");
                } else {
                    Item();
                    ++taken;
                }
            }
            m_isGood = m_isGood && taken == (type % 8 == 4 ? 1 : count);
            Take("/data");
        }
        Take("/list");
    }

    const std::vector<Event>& m_events;
    std::size_t m_position = 0;
    bool m_isGood = true;
};

bool IsTaken(const std::vector<Event>& events) {
    BinaryProtocolStateTracker tracker;
    try {
        for (const Event& event : events) {
            Feed(tracker, event);
        }
    } catch (const LumException&) {
        return false;
    }
    return !tracker.HasStates();
}

TEST(BinaryProtocolStateTrackerTest, AgreesWithTheGrammar) {
    test::Random random;
    SCOPED_TRACE(random.Trace());
    const test::LogCapture log;
    ScriptMaker maker(random);
    std::size_t damaged = 0;
    std::size_t stillGood = 0;
    for (int round = 0; round < 20'000; ++round) {
        std::vector<Event> events = maker.Make();
        ASSERT_TRUE(ScriptJudge(events).IsWellFormed()) << ToScript(events);
        ASSERT_TRUE(IsTaken(events)) << ToScript(events);
        const std::size_t place = random.Below(events.size());
        switch (random.Below(5)) {
            case 0:
                events.erase(events.begin() + static_cast<std::ptrdiff_t>(place));
                break;
            case 1:
                events.insert(events.begin() + static_cast<std::ptrdiff_t>(place),
                              maker.MakeEvent());
                break;
            case 2:
                events[place] = maker.MakeEvent();
                break;
            case 3:
                events[place].number = static_cast<unsigned int>(random.Below(5));
                break;
            default:
                std::swap(events[place], events[random.Below(events.size())]);
        }
        const bool isWellFormed = ScriptJudge(events).IsWellFormed();
        ASSERT_EQ(IsTaken(events), isWellFormed) << ToScript(events);
        ++(isWellFormed ? stillGood : damaged);
    }
    EXPECT_GT(damaged, 5'000u);
    EXPECT_GT(stillGood, 500u);
}

}  // namespace
}  // namespace lum::core
