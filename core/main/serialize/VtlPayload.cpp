#include "lum/core/serialize/VtlPayload.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

#include "core/main/serialize/KeyPathParser.h"
#include "core/main/serialize/KeyPathWriter.h"
#include "core/main/serialize/NumberWriter.h"
#include "core/main/serialize/VtlScanner.h"
#include "core/main/serialize/VtlStatements.h"
#include "lum/core/Check.h"
#include "lum/core/utility/LumSize.h"
#include "lum/core/utility/MetricsFilter.h"

namespace lum::core {
namespace {

using Kind = VtlTokenKind;

constexpr std::u16string_view kGraphMarker = u"(graph)";
constexpr std::u16string_view kKeysMarker = u"(updatable-keys)";
constexpr std::u16string_view kVtlMarker = u"(vtl)";

// Enough for most edges, and no more memory than they take themselves.
constexpr std::size_t kUnitsPerEdge = 32;

// Writing -----------------------------------------------------------------------------------------

void AppendLine(TStringCore& out, std::u16string_view marker) {
    out.append(marker.data(), marker.size());
    out += u'\n';
}

void AppendId(TStringCore& out, lumsize_t id) {
    char16_t* const room = out.prepareAppend(kNumberCapacity);
    out.commitAppend(static_cast<std::size_t>(WriteInt64(id, room) - room));
    out += u',';
}

char16_t LetterOf(BufferType type) {
    switch (type) {
        case BufferType::C:
            return u'c';
        case BufferType::I:
            return u'i';
    }
    detail::FailLogic({__FILE__, __LINE__, ""}, LumError::Unspecified);
}

void AppendEdge(TStringCore& out, const GraphEdge& edge, KeyPathWriter& keys) {
    if (edge.HasSource()) {
        AppendId(out, edge.sourceId);
    }
    out += u',';
    for (const lumsize_t sinkId : edge.sinkIds) {
        AppendId(out, sinkId);
    }
    keys.Append(out, edge.key);
    out += u',';
    out += LetterOf(edge.bufferType);
    out += u'\n';
}

// Reading -----------------------------------------------------------------------------------------

TStringCore BehindLineFeed(std::u16string_view marker) {
    return TStringCore(1, u'\n') + TStringCore(marker);
}

TStringCore BeforeLineFeed(std::u16string_view marker) {
    return TStringCore(marker) + TStringCore(1, u'\n');
}

// How many edges a section may have: lines, but no more than there is room for.
std::size_t CountEdges(std::u16string_view section) {
    constexpr std::size_t kShortestEdge = 5;  // ",a,c" and its line feed.
    const auto lines = std::count(section.begin(), section.end(), u'\n');
    return std::min(static_cast<std::size_t>(lines), section.size() / kShortestEdge + 1);
}

// Lines of edges and keys, each read by a scanner of its own.
class SectionReader {
public:
    // `textEnd` is the end of the whole text, which the sections are parts of.
    SectionReader(const char16_t* textEnd, KnownKeyPaths& known)
        : m_textEnd(textEnd), m_known(known) {}

    std::vector<GraphEdge> ReadEdges(std::u16string_view section);
    std::unordered_set<KeyPath> ReadKeys(std::u16string_view section);

private:
    // Calls `read` with a scanner of each line that is not empty.
    template <typename Read>
    void ForEachLine(std::u16string_view section, const Read& read);
    GraphEdge ReadEdge(VtlScanner& scanner);
    // The key of an edge, good until the next one is read.
    const KeyPath& ReadEdgeKey(VtlScanner& scanner);
    // Numbers, each with a comma behind it. Good until the next ones are read.
    const std::vector<lumsize_t>& ReadIds(VtlScanner& scanner);

    const char16_t* const m_textEnd;
    KeyPathReader m_keys;
    KnownKeyPaths& m_known;
    std::vector<lumsize_t> m_ids;  // Of the list that is being read.
};

template <typename Read>
void SectionReader::ForEachLine(std::u16string_view section, const Read& read) {
    while (!section.empty()) {
        const std::u16string_view line = section.substr(0, section.find(u'\n'));
        section.remove_prefix(std::min(line.size() + 1, section.size()));
        if (!line.empty()) {
            VtlScanner scanner(line, m_textEnd);
            read(scanner);
        }
    }
}

// Takes the numbers at the start of `units` that are few digits and a comma right behind them.
// Gives the number of units taken.
std::size_t TakePlainIds(std::u16string_view units, std::vector<lumsize_t>& ids) {
    constexpr std::size_t kMostDigits = 9;
    std::size_t taken = 0;
    while (true) {
        lumsize_t id = 0;
        std::size_t at = taken;
        for (; at < units.size() && at - taken <= kMostDigits && units[at] >= u'0' &&
               units[at] <= u'9';
             ++at) {
            id = id * 10 + (units[at] - u'0');
        }
        if (at == taken || at - taken > kMostDigits || at == units.size() || units[at] != u',') {
            return taken;
        }
        ids.push_back(id);
        taken = at + 1;
    }
}

const std::vector<lumsize_t>& SectionReader::ReadIds(VtlScanner& scanner) {
    m_ids.clear();
    // Nearly all stand plainly, and are not worth two tokens each.
    if (const std::size_t taken = TakePlainIds(scanner.GetRest(), m_ids)) {
        scanner.SkipRest(taken);
    }
    while (scanner.PeekIs(Kind::IntegerLiteral)) {
        m_ids.push_back(LumSizeCastSafe(static_cast<uint64>(scanner.Next().GetInteger())));
        scanner.Expect(Kind::Comma);
    }
    return m_ids;
}

// A key mostly takes all that stands before the last comma of its line. What was read so once, up
// to that comma, reads the same each time.
const KeyPath& SectionReader::ReadEdgeKey(VtlScanner& scanner) {
    const std::size_t start = scanner.PeekNext().GetStart();
    const std::u16string_view rest = scanner.PeekUnits();
    const std::size_t comma = rest.rfind(u',');
    const std::u16string_view text = rest.substr(0, comma == std::u16string_view::npos ? 0 : comma);
    if (text.empty()) {
        return m_keys.Read(scanner, TypeColon::AnywhereBehindName);
    }
    if (const KeyPath* const known = m_known.TryGet(text)) {
        scanner.Skip(text.size());
        return *known;
    }
    const KeyPath& path = m_keys.Read(scanner, TypeColon::AnywhereBehindName);
    if (scanner.GetCurrent().GetEnd() == start + text.size()) {
        m_known.Add(text, path);
    }
    return path;
}

GraphEdge SectionReader::ReadEdge(VtlScanner& scanner) {
    const std::vector<lumsize_t>& sourceIds = ReadIds(scanner);
    LUM_INVARIANT(sourceIds.size() <= 1, LumError::SeveralBufferSources);
    const lumsize_t source = sourceIds.empty() ? GraphEdge::NullSourceId : sourceIds.front();
    scanner.Expect(Kind::Comma);
    std::vector<lumsize_t> sinkIds = ReadIds(scanner);
    const KeyPath& key = ReadEdgeKey(scanner);
    scanner.Expect(Kind::Comma);
    BufferType type = BufferType::C;
    switch (scanner.Expect(Kind::Identifier).GetUnits().front()) {
        case u'c':
            break;
        case u'i':
            type = BufferType::I;
            break;
        default:
            detail::FailLogic({__FILE__, __LINE__, ""}, LumError::Unspecified);
    }
    return GraphEdge(key, source, std::move(sinkIds), type);
}

std::vector<GraphEdge> SectionReader::ReadEdges(std::u16string_view section) {
    std::vector<GraphEdge> edges;
    edges.reserve(CountEdges(section));
    ForEachLine(section, [&](VtlScanner& scanner) { edges.push_back(ReadEdge(scanner)); });
    return edges;
}

std::unordered_set<KeyPath> SectionReader::ReadKeys(std::u16string_view section) {
    std::unordered_set<KeyPath> keys;
    ForEachLine(section, [&](VtlScanner& scanner) {
        keys.insert(m_keys.Read(scanner, TypeColon::AnywhereBehindName));
        scanner.Expect(Kind::End);
    });
    return keys;
}

}  // namespace

TStringCore MakeVtlPayload(const std::vector<TransformSpec>& transforms,
                           const std::vector<GraphEdge>& edges,
                           const std::unordered_set<KeyPath>& updatableKeys) {
    const Metrics::Scope scope =
        MetricsFilter::OpenScope(MetricsFilter::Bits::Vtl, "lum_core_MakeVtlPayload");
    KeyPathSerializerCache cache;
    KeyPathWriter keys(&cache, /*includeTypes=*/false, edges.size());
    TStringCore text;
    text.reserve(std::min(edges.size() * kUnitsPerEdge, TStringCore::kMaxLength));
    AppendLine(text, kGraphMarker);
    for (const GraphEdge& edge : edges) {
        AppendEdge(text, edge, keys);
    }
    AppendLine(text, kKeysMarker);
    for (const KeyPath& key : updatableKeys) {
        keys.Append(text, key);
        text += u'\n';
    }
    AppendLine(text, kVtlMarker);
    AppendVtlStatements(text, transforms, /*includeComments=*/false, cache);
    return text;
}

void ParseVtlPayload(const TStringCore& text, std::vector<TransformSpec>& transforms,
                     std::vector<GraphEdge>& edges, std::unordered_set<KeyPath>& updatableKeys) {
    const Metrics::Scope scope =
        MetricsFilter::OpenScope(MetricsFilter::Bits::Vtl, "lum_core_ParseVtlPayload");
    const auto find = [&text](const TStringCore& wanted, long long from) {
        return text.find(wanted, static_cast<std::size_t>(from));
    };
    const auto graphMarkerLen = static_cast<long long>(kGraphMarker.size());
    const auto updKeysMarkerLen = static_cast<long long>(kKeysMarker.size());
    const auto vtlMarkerLen = static_cast<long long>(kVtlMarker.size());

    // A section begins at the line feed behind its marker, so that the one before the next marker
    // is found where the section is empty.
    const long long graphStart = find(BeforeLineFeed(kGraphMarker), 0);
    const long long graphEnd = find(BehindLineFeed(kKeysMarker), graphStart + 1);
    LUM_CHECK(graphStart >= 0 && graphEnd >= graphStart + graphMarkerLen,
              LumError::InvalidPayloadContent);
    const long long updKeysStart = find(BeforeLineFeed(kKeysMarker), graphEnd);
    const long long updKeysEnd = find(BehindLineFeed(kVtlMarker), updKeysStart + 1);
    LUM_CHECK(updKeysStart > graphEnd && updKeysEnd >= updKeysStart + updKeysMarkerLen,
              LumError::InvalidPayloadContent);
    const long long vtlStart = find(BeforeLineFeed(kVtlMarker), updKeysEnd);
    LUM_CHECK(vtlStart > updKeysEnd, LumError::InvalidPayloadContent);

    const auto section = [&text](long long start, long long end) {
        return text.view().substr(static_cast<std::size_t>(start),
                                  static_cast<std::size_t>(end - start));
    };
    KnownKeyPaths known;
    SectionReader reader(text.end(), known);
    edges = reader.ReadEdges(section(graphStart + graphMarkerLen, graphEnd));
    updatableKeys = reader.ReadKeys(section(updKeysStart + updKeysMarkerLen, updKeysEnd));
    transforms = ReadVtlStatements(
        section(vtlStart + vtlMarkerLen + 1, static_cast<long long>(text.length())), text.end(),
        /*keepComments=*/false, known);
}

}  // namespace lum::core
