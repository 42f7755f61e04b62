#include "lum/core/serialize/VtlPayload.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "lum/core/serialize/VtlSerializer.h"
#include "lum/core/utility/MetricsFilter.h"
#include "tests/support/LumErrorMatchers.h"
#include "tests/vtl/Programs.h"

namespace lum::core {
namespace {

using test::Key;
using test::Program;
using KeySet = std::unordered_set<KeyPath>;

constexpr BufferType kC = BufferType::C;
constexpr BufferType kI = BufferType::I;
constexpr char kTooLarge[] = "Value exceeds maximum legal value for lumsize_t";

struct Payload {
    std::vector<TransformSpec> transforms;
    std::vector<GraphEdge> edges;
    KeySet keys;
};

std::string Make(const Payload& payload) {
    return MakeVtlPayload(payload.transforms, payload.edges, payload.keys).toStdString();
}

void ParseInto(Payload& payload, const std::string& text) {
    ParseVtlPayload(TStringCore::fromUtf8(text), payload.transforms, payload.edges, payload.keys);
}

Payload Parse(const std::string& text) {
    Payload payload;
    ParseInto(payload, text);
    return payload;
}

std::string PrintedProgram(const Payload& payload) {
    return TransformsToPayloadString(payload.transforms).toStdString();
}

std::string WithEdges(const std::string& lines) {
    return "(graph)\n" + lines + "(updatable-keys)\n(vtl)\n";
}

std::vector<GraphEdge> Edges(const std::string& lines) {
    return Parse(WithEdges(lines + "\n")).edges;
}

TEST(VtlPayloadTest, IsReadAsItIsWritten) {
    Payload payload;
    EXPECT_EQ(Make(payload), WithEdges(""));

    const std::pair<GraphEdge, std::string> cases[] = {
        {GraphEdge(3, {4, 5}, Key("a/b:i"), kC), "3,,4,5,a/b,c\n"},
        {GraphEdge(Key("a/b"), kI), ",a/b,i\n"},
        {GraphEdge(GraphEdge::NullSourceId, {4}, Key("a/b"), kI), ",4,a/b,i\n"},
        {GraphEdge(0, {}, Key("a"), kC), "0,,a,c\n"},
        {GraphEdge(GraphEdge::NullSourceId - 1, {GraphEdge::NullSourceId}, Key("a"), kC),
         "4294967294,,4294967295,a,c\n"},
        {GraphEdge(1, {2}, Key("'(vtl)'/'a,\\n(vtl)'/7"), kC), "1,,2,'(vtl)'/'a,\\n(vtl)'/7,c\n"},
    };
    std::string lines;
    for (const auto& [edge, line] : cases) {
        payload.edges.push_back(edge);
        lines += line;
    }
    EXPECT_EQ(Make(payload), WithEdges(lines));

    payload.transforms = Program("// a comment\na:i -> map (negate) -> b:i\n");
    payload.keys = {Key("x:K<s,i>/'two words'")};
    const std::string text = "(graph)\n" + lines +
                             "(updatable-keys)\nx/'two words'\n"
                             "(vtl)\na:i -> map (negate) -> b:i\n";
    EXPECT_EQ(Make(payload), text);

    Payload read = Parse(text);
    EXPECT_EQ(read.edges, payload.edges);
    EXPECT_EQ(read.edges[0].key.GetSegments().back().GetType(), nullptr);
    EXPECT_EQ(read.keys, payload.keys);
    ASSERT_EQ(read.transforms.size(), 1u);
    EXPECT_EQ(PrintedProgram(read), PrintedProgram(payload));

    ParseInto(read, WithEdges(""));  // Replaces what was there.
    EXPECT_TRUE(read.transforms.empty() && read.edges.empty() && read.keys.empty());
}

TEST(VtlPayloadTest, WhatOthersMayWrite) {
    const GraphEdge edge(3, {4}, Key("a/b"), kC);
    for (const std::string line :
         {"  3 , , 4 , a / b , c  ", "3,,4,a:K<s,i>/b:A<i>,c", "3,,4,'a'/b,c",
          "3,,4,a/b,constant, and more", "\n\n3,,4,a/b,c\n\n", "3,,4,a/b,c\r", "03,,0004,a/b,c"}) {
        EXPECT_EQ(Edges(line + "\n" + line), (std::vector{edge, edge})) << line;
    }
    // The number that stands for none.
    EXPECT_FALSE(Edges("4294967295,,a,i")[0].HasSource());
    // A type that begins like one of the letters.
    EXPECT_EQ(Edges(",a:i,i\n,a,c"),
              (std::vector{GraphEdge(Key("a"), kI), GraphEdge(Key("a"), kC)}));

    // Before the first section, and between one and the last place where the next one begins.
    const Payload payload = Parse(
        "greetings (graph)\n,a,c\n(updatable-keys) not yet\n(updatable-keys)\n"
        "a:i\n\n b / c \na\n7\n(vtl) not yet\n(vtl)\na -> copy -> b\n");
    EXPECT_EQ(payload.edges, (std::vector{GraphEdge(Key("a"), kC)}));
    EXPECT_EQ(payload.keys, (KeySet{Key("a"), Key("b/c"), Key("7")}));
    EXPECT_EQ(PrintedProgram(payload), "a -> copy -> b\n");
}

// Numbers of few digits, each with its comma right behind it, are read by a shorter way up to the
// first that is none of these. A blank in front of all leaves everything to the scanner.
TEST(VtlPayloadTest, IdsInAnyForm) {
    const std::pair<std::string, std::vector<lumsize_t>> cases[] = {
        {"999999999,", {999999999}},
        {"1000000000,", {1000000000}},
        {"4294967295,", {4294967295}},
        {"007,", {7}},
        {"00000000007,", {7}},
        {"1,4294967295,2,", {1, 4294967295, 2}},
        {"1 ,2,", {1, 2}},
        {"1, 2,", {1, 2}},
        {"1,2 , 3,4,", {1, 2, 3, 4}},
        {"1\t,\r2,", {1, 2}},
    };
    for (const std::string before : {"", " "}) {
        for (const auto& [ids, sinks] : cases) {
            const GraphEdge withSinks(Key("a"), GraphEdge::NullSourceId, sinks, kI);
            EXPECT_EQ(Edges("," + before + ids + "a,i"), std::vector{withSinks}) << before << ids;
            if (sinks.size() == 1) {
                const GraphEdge withSource(Key("a"), sinks[0], {}, kI);
                EXPECT_EQ(Edges(before + ids + ",a,i"), std::vector{withSource}) << before << ids;
            }
        }
        for (const std::string ids :
             {"4294967296,", "4294967297,", "42949672950,", "1,4294967296,"}) {
            EXPECT_LUM_PLAIN_ERROR(OutOfRange, kTooLarge, Edges("," + before + ids + "a,i"));
            EXPECT_LUM_PLAIN_ERROR(OutOfRange, kTooLarge, Edges(before + ids + ",a,i"));
        }
    }
}

TEST(VtlPayloadTest, MarkersAreNeededInOrder) {
    const char kGraph[] = "(graphStart >= 0 && graphEnd >= graphStart + graphMarkerLen)";
    const char kKeys[] =
        "(updKeysStart > graphEnd && updKeysEnd >= updKeysStart + updKeysMarkerLen)";
    const char kVtl[] = "(vtlStart > updKeysEnd)";
    const std::pair<const char*, const char*> cases[] = {
        {"", kGraph},
        {"(updatable-keys)\n(vtl)\n", kGraph},
        {"(graph)\n(vtl)\n", kGraph},
        {"(graph)(updatable-keys)\n(vtl)\n", kGraph},
        {"(updatable-keys)\n(graph)\n(vtl)\n", kGraph},
        {"(graph)\r\n(updatable-keys)\r\n(vtl)\r\n", kGraph},
        {"(graph)\n(updatable-keys) \n(vtl)\n", kKeys},
        {"(graph)\n(updatable-keys)\n", kKeys},
        {"(graph)\n(updatable-keys)\n a (vtl)\n", kKeys},
        {"(vtl)\n(graph)\n(updatable-keys)\n", kKeys},
        {"(graph)\n(updatable-keys)\n(vtl)", kVtl},
        {"(graph)\n(updatable-keys)\n(vtl) \n", kVtl},
    };
    for (const auto& row : cases) {
        Payload payload;
        payload.edges = {GraphEdge(Key("kept"), kI)};
        EXPECT_LUM_REPORT(InvalidPayloadContent, "", row.second, ParseInto(payload, row.first))
            << row.first;
        EXPECT_EQ(payload.edges.size(), 1u);
    }
}

TEST(VtlPayloadTest, MalformedEdges) {
    for (const char* const line :
         {"3", "3,", "3,,", "3,,4", "3,,4,", "3,,4,a/b", "3,,4,a/b,", "3,,4,a/b,7", "3,,4,a/b,'c'",
          "3,,4,a/b,inf", "3,,4,,c", "a/b,c", ",4,7,c", ",-4,a,c", ",4,a b,c", ",4,/a,c", " ",
          "99999999999999999999,,a,c", ",4,a\x7F,c"}) {
        EXPECT_LUM_REPORT(UnexpectedToken, line, "", Edges(line)) << line;
    }
    const char kSources[] = "(sourceIds.size() <= 1)";
    EXPECT_LUM_LOGIC_REPORT(SeveralBufferSources, "", kSources, Edges("3,4,,5,a,c"));
    for (const char* const line : {",a,d", ",a,C", ",a,^c"}) {
        EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "", Edges(line));
    }
    EXPECT_LUM_REPORT(UnknownTypeName, ",a:q,c", "", Edges(",a:q,c"));

    Payload payload;
    payload.edges = {GraphEdge(Key("a"), static_cast<BufferType>(2))};
    EXPECT_LUM_LOGIC_REPORT(Unspecified, "", "", Make(payload));
}

TEST(VtlPayloadTest, SectionsBeforeAFailureAreGiven) {
    Payload payload;
    payload.keys = {Key("kept")};
    payload.transforms = Program("a -> copy -> b");
    EXPECT_LUM_REPORT(UnexpectedToken, "b c", "",
                      ParseInto(payload, "(graph)\n,a,c\n(updatable-keys)\na\nb c\n(vtl)\n"));
    EXPECT_EQ(payload.edges.size(), 1u);
    EXPECT_EQ(payload.keys, KeySet{Key("kept")});

    EXPECT_LUM_REPORT(UnexpectedToken, "", "",
                      ParseInto(payload, "(graph)\n(updatable-keys)\nb\n(vtl)\na -> \n"));
    EXPECT_TRUE(payload.edges.empty());
    EXPECT_EQ(payload.keys, KeySet{Key("b")});
    EXPECT_EQ(PrintedProgram(payload), "a -> copy -> b\n");
}

// Keys that share their segments are written and read by shorter ways.
TEST(VtlPayloadTest, KeysThatRepeat) {
    std::vector<KeyPath> keys;
    for (int i = 0; i < 300; ++i) {
        keys.push_back(Key("a/'b, c'/k" + std::to_string(i) + (i % 3 == 0 ? ":i" : "")));
    }
    Payload payload;
    std::string edges;
    std::string statements;
    for (std::size_t i = 0; i < 1000; ++i) {
        const KeyPath& key = keys[i * i % keys.size()];
        payload.edges.emplace_back(key, kC);
        edges += "," + key.ToString().toStdString() + ",c\n";
        payload.transforms.emplace_back(OperatorType::Copy, std::vector{key, keys[i % 7]},
                                        std::vector{key});
        statements += TransformToString(payload.transforms.back()).toStdString() + "\n";
    }
    EXPECT_EQ(Make(payload), WithEdges(edges) + statements);
    EXPECT_EQ(Parse(Make(payload)).edges, payload.edges);
    EXPECT_EQ(PrintedProgram(Parse(Make(payload))), statements);
}

TEST(VtlPayloadTest, TimeIsLinear) {
    // A reader that starts over at every marker, or at every number, would take minutes.
    std::string markers;
    std::string ids;
    for (int i = 0; i < 200000; ++i) {
        markers += "(graph)(updatable-keys)(vtl) ";
        ids += "1,";
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_LUM_ERROR(InvalidPayloadContent, "", Parse(markers));
    EXPECT_THROW(Edges(ids), LumLogicException);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(VtlPayloadTest, RunsInsideItsScopes) {
    std::vector<std::string> names;
    const auto former = Metrics::SetSink(
        std::make_shared<const Metrics::Sink>(
            [&](const Metrics::ScopeRecord& record) { names.emplace_back(record.name); }),
        static_cast<unsigned>(MetricsFilter::Bits::Vtl));
    Parse(Make(Payload()));
    Metrics::SetSink(former);
    EXPECT_EQ(names,
              (std::vector<std::string>{"lum_core_MakeVtlPayload", "lum_core_ParseVtlPayload"}));
}

}  // namespace
}  // namespace lum::core
