#include "core/main/serialize/BinaryProtocolStateTracker.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/LumErrorMatchers.h"

namespace lum::core {
namespace {

// An event as a word: list=9 (the byte of the type, decimal) ... /list, data=2 ... /data for
// segments, dict=1 ... /dict, table=1 ... /table, keys=2 ... /keys, and key, type, value, block=3.
struct Event {
    std::string name;
    unsigned int number;
};

std::vector<Event> ParseScript(const std::string& script) {
    std::vector<Event> events;
    std::istringstream words(script);
    for (std::string word; words >> word;) {
        const std::size_t sign = word.find('=');
        const std::string number = sign == std::string::npos ? "0" : word.substr(sign + 1);
        events.push_back({word.substr(0, sign), static_cast<unsigned int>(std::stoul(number))});
    }
    return events;
}

void FeedOne(BinaryProtocolStateTracker& tracker, const Event& event) {
    const unsigned int number = event.number;
    const std::map<std::string, std::function<void()>> calls = {
        {"list",
         [&] { tracker.BeginListType(BinaryListType(static_cast<unsigned char>(number))); }},
        {"keys", [&] { tracker.BeginKeySetType(static_cast<BinaryKeySetType>(number)); }},
        {"dict", [&] { tracker.BeginDictionaryType(number); }},
        {"table", [&] { tracker.BeginTableType(number); }},
        {"data", [&] { tracker.BeginListData(number); }},
        {"block", [&] { tracker.AppendArrayData(number); }},
        {"/list", [&] { tracker.EndListType(); }},
        {"/keys", [&] { tracker.EndKeySetType(); }},
        {"/dict", [&] { tracker.EndDictionaryType(); }},
        {"/table", [&] { tracker.EndTableType(); }},
        {"/data", [&] { tracker.EndListData(); }},
        {"key", [&] { tracker.AppendKey(); }},
        {"type", [&] { tracker.AppendKeyType(); }},
        {"value", [&] { tracker.AppendData(); }},
    };
    calls.at(event.name)();
}

void Feed(BinaryProtocolStateTracker& tracker, const std::string& script) {
    for (const Event& event : ParseScript(script)) {
        FeedOne(tracker, event);
    }
}

// What payloads of values do not show.
TEST(BinaryProtocolStateTrackerTest, Accepts) {
    const char* const scripts[] = {
        // A first segment without items switches the comparison of counts off; so does an order.
        "list=9 data=0 /data data=3 block=3 /data /list",
        "list=41 data=1 value /data data=3 block=3 /data /list",
        // One item, whatever the count.
        "list=4 data=1000 value /data /list",
        // Containers are items.
        "list=1 data=4 list=6 data=0 /data /list dict=0 /dict keys=1 data=0 /data /keys value "
        "/data /list",
        // A key set may end before its segments.
        "dict=1 key type keys=2 /keys /dict",
        "keys=2 data=0 /data /keys",
        // A list where a key is due is the key.
        "keys=1 data=2 list=6 data=0 /data /list list=6 data=0 /data /list key keys=1 data=0 /data "
        "/keys /data /keys",
        // Counts wrap, and nobody notices where they wrap to zero.
        "list=1 data=1 block=4294967295 value value /data /list",
    };
    for (const char* const script : scripts) {
        SCOPED_TRACE(script);
        BinaryProtocolStateTracker tracker;
        Feed(tracker, script);
        EXPECT_FALSE(tracker.HasStates());
    }
}

const std::string kMoreSegments = "(m_segmentCount > 0)";
const std::string kNoSegments = "(m_segmentCount == 0)";

// By the byte of its type, a list has its number of segments, or is none.
TEST(BinaryProtocolStateTrackerTest, SegmentsOfLists) {
    for (unsigned int byte = 0; byte < 256; ++byte) {
        const int withKinds = (byte & 8) != 0 ? 2 : 1;
        const int runs = (byte & 16) != 0 ? 4 : 3;
        // Of none, array, bytes, composite array, constant array, set, tuple, none.
        const int counts[] = {0, withKinds, 1, runs, 1, withKinds, withKinds, 0};
        const std::string begin = "list=" + std::to_string(byte);
        SCOPED_TRACE(begin);
        BinaryProtocolStateTracker tracker;
        if (counts[byte % 8] == 0) {
            EXPECT_LUM_REPORT(InvalidListType, "",
                              "(type.GetContainerType() > BinaryContainerType::INVALID && "
                              "type.GetContainerType() < BinaryContainerType::COUNT)",
                              Feed(tracker, begin));
            continue;
        }
        Feed(tracker, begin);
        for (int i = 0; i < counts[byte % 8]; ++i) {
            EXPECT_LUM_REPORT(ListSegmentCountMismatch, "", kNoSegments, Feed(tracker, "/list"));
            Feed(tracker, byte % 8 == 4 ? "data=0 value /data" : "data=0 /data");
        }
        EXPECT_LUM_REPORT(ListSegmentCountMismatch, "", kMoreSegments, Feed(tracker, "data=0"));
        Feed(tracker, "/list");
        EXPECT_FALSE(tracker.HasStates());
    }
}

struct Refusal {
    std::string events;
    LumError error;
    std::string condition;
};

// A state, and what it says to each event: taken, or else refused as told, or else refused as what
// such a container never takes.
struct State {
    std::string script;  // That leads to it.
    std::string taken;
    std::vector<Refusal> refused;
};

TEST(BinaryProtocolStateTrackerTest, EveryEventInEveryState) {
    using enum LumError;
    const std::string containers = "list=1 dict=0 table=0 keys=1 ";
    const std::string items = "list=1 dict=0 keys=1 value ";
    const std::string others = "/list /dict /table /keys data=0 /data key type value block=1";
    const std::string lists = "list=1 data=0 /data /list list=1 data=0 /data /list ";
    const std::string isKey = "(m_state == State::ExpectKey)";
    const std::string isValue = "(m_state == State::ExpectValue)";
    const std::string isStart = "(m_state == State::ExpectListStart)";
    const std::string isNone = "(m_count == 0)";
    // Lists
    const Refusal noData{items + "block=1 /data", ListDataExpected,
                         "(m_state == State::ExpectData)"};
    const Refusal noStart{"data=0", ListStartExpected, isStart};
    const Refusal noSegment{"data=0", ListSegmentCountMismatch, kMoreSegments};
    const Refusal unlikeSegment{"data=0", ListSegmentCountMismatch, "(count == m_lastDataCount)"};
    const Refusal tooFewItems{"/data", ListValueCountMismatch, isNone};
    const Refusal noEndOfList{"/list", ListStartExpected, isStart};
    const Refusal tooFewSegments{"/list", ListSegmentCountMismatch, kNoSegments};
    // Dictionaries and tables
    const Refusal noMember{containers + "value", DictionaryDataExpected, isValue};
    const Refusal noKey{"key /dict", ProtocolKeyExpected, isKey};
    const Refusal noType{"type", DictionaryTypeInfoExpected, "(m_state == State::ExpectTypeInfo)"};
    const Refusal tooFewMembers{"/dict", DictionaryValueCountMismatch, isNone};
    const Refusal noList{"list=1", ListDataExpected, "(m_state == State::BeginNestedList)"};
    const Refusal noColumn{"key", ListDataExpected, isKey};
    const Refusal noEndOfTable{"/table", ProtocolKeyExpected,
                               "(m_state == State::EndCurrentTable)"};
    // Key sets
    const Refusal noEntry{"key", KeySetKeyExpected, isKey};
    const Refusal noElement{items, KeySetDataExpected, isValue};
    const Refusal noEndOfEntries{"/data", ListDataExpected, isKey};
    const Refusal noEndOfKeySet{"/keys", KeySetKeyExpected, isStart};
    const State states[] = {
        {"", containers, {{others, ProtocolStateMismatch, "!(m_states.empty())"}}},

        {"list=1", "data=0", {noData, tooFewSegments}},
        {"list=1 data=0", items + "block=1 /data", {noStart, noEndOfList}},
        {"list=1 data=2 value", items + "block=1", {noStart, tooFewItems, noEndOfList}},
        {"list=1 data=0 /data", "/list", {noData, noSegment}},
        {"list=9 data=3 block=3 /data", "", {noData, unlikeSegment, tooFewSegments}},

        {"dict=0", "key /dict", {noMember, noType}},
        {"dict=1", "key", {noMember, noType, tooFewMembers}},
        {"dict=1 key", "type", {noMember, noKey}},
        {"dict=1 key type", containers + "value", {noType, noKey}},
        {"dict=0 key type value", "key", {noMember, noType, tooFewMembers}},

        {"table=1", "list=1", {noColumn, noType, noEndOfTable}},
        {"table=1 list=1 data=0 /data /list", "list=1", {noColumn, noType, noEndOfTable}},
        {"table=1 " + lists, "key", {noList, noType, noEndOfTable}},
        {"table=1 " + lists + "key", "type", {noList, noColumn, noEndOfTable}},
        {"table=1 " + lists + "key type", "list=1", {noColumn, noType, noEndOfTable}},
        {"table=0 " + lists, "/table", {noList, noColumn, noType}},

        {"keys=1", "data=0 /keys", {noEntry, noElement, noEndOfEntries}},
        {"keys=1 data=0", "list=1 key /data", {noStart, noElement, noEndOfKeySet}},
        {"keys=1 data=2 key value", "list=1 key", {noStart, noElement, tooFewItems, noEndOfKeySet}},
        {"keys=1 data=1 key", items, {noStart, noEntry, noEndOfEntries, noEndOfKeySet}},
        {"keys=1 data=0 /data", "/keys", {noEntry, noElement, noEndOfEntries, noSegment}},
    };
    for (const State& state : states) {
        std::map<std::string, Refusal> answers;
        for (const Event& event : ParseScript(containers + others)) {
            answers[event.name] = {"", ProtocolStateMismatch, ""};
        }
        for (const Refusal& refusal : state.refused) {
            for (const Event& event : ParseScript(refusal.events)) {
                answers[event.name] = refusal;
            }
        }
        for (const Event& event : ParseScript(state.taken)) {
            answers[event.name] = {"", NoError, ""};
        }
        for (const Event& event : ParseScript(containers + others)) {
            SCOPED_TRACE(state.script + " then " + event.name);
            BinaryProtocolStateTracker tracker;
            Feed(tracker, state.script);
            const Refusal& answer = answers[event.name];
            if (answer.error == NoError) {
                EXPECT_NO_THROW(FeedOne(tracker, event));
                continue;
            }
            EXPECT_TRUE(test::FailsAs({answer.error, "", true, answer.condition},
                                      [&] { FeedOne(tracker, event); }));
            EXPECT_EQ(tracker.HasStates(), !state.script.empty());
        }
    }
}

// The container outside is asked first.
TEST(BinaryProtocolStateTrackerTest, ContainersThatAreNone) {
    BinaryProtocolStateTracker tracker;
    for (const char* const keySet : {"keys=0", "keys=3"}) {
        EXPECT_LUM_LOGIC_REPORT(Unspecified, "",
                                "(m_type == BinaryKeySetType::NoSpecialKeys || m_type == "
                                "BinaryKeySetType::WithSpecialKeys)",
                                Feed(tracker, keySet));
    }
    Feed(tracker, "list=1");
    EXPECT_LUM_ERROR(ListDataExpected, "", Feed(tracker, "list=0"));
    EXPECT_LUM_ERROR(ListDataExpected, "", Feed(tracker, "keys=3"));
    Feed(tracker, "data=1");
    EXPECT_LUM_ERROR(InvalidListType, "", Feed(tracker, "list=0"));
}

TEST(BinaryProtocolStateTrackerTest, ItemsAreCounted) {
    for (const char* const script :
         {"list=1 data=4 block=5", "list=1 data=0 value", "list=4 data=2 value value",
          "list=4 data=2", "keys=1 data=0 key value"}) {
        BinaryProtocolStateTracker tracker;
        Feed(tracker, script);
        EXPECT_LUM_ERROR(ListValueCountMismatch, "", Feed(tracker, "/data"));
    }
}

}  // namespace
}  // namespace lum::core
