#include "PayloadDataDump.h"

#include <algorithm>
#include <string>
#include <vector>

#include "FileError.h"
#include "PayloadItemText.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"
#include "lum/core/types/TupleType.h"

namespace lumhost {

using namespace lum::core;

namespace {

constexpr lumsize_t kShownItems = 8;
// As deep as the library reads values.
constexpr unsigned int kMaxDepth = 256;

std::string Count(lumsize_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

}  // namespace

// Lines of what stands within something stand deeper than its own.
class PayloadDataDump::Level {
public:
    explicit Level(PayloadDataDump& dump) : m_lines(dump.m_lines) { m_lines.Indent(1); }
    ~Level() { m_lines.Indent(-1); }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

private:
    HexLines& m_lines;
};

PayloadDataDump::PayloadDataDump(BinaryProtocolReader& reader, const PayloadHeader& header,
                                 HexLines& lines)
    : m_reader(reader),
      m_lines(lines),
      m_countSize(header.isBase128 ? 1 : 4),
      m_end(header.data + reader.GetRemainingBytes()),
      m_start(header.data),
      m_begin(header.data) {}

void PayloadDataDump::Dump() {
    DumpDictionary();
    Begin();
    if (m_begin < m_end) {
        m_lines.Add(m_begin, m_end, "behind the root, where nobody reads");
    }
}

HexLines::Position PayloadDataDump::FindPosition() const {
    return m_end - m_reader.GetRemainingBytes();
}

// What was read since Begin: a word of that size, behind its padding.
void PayloadDataDump::Note(unsigned int wordSize, const std::string& meaning) {
    const HexLines::Position end = FindPosition();
    const HexLines::Position offset = m_begin - m_start;
    const HexLines::Position begin = m_start + (offset + wordSize - 1) / wordSize * wordSize;
    if (begin < end) {
        m_lines.Add(begin, end, meaning);
    }
}

template <typename T>
void PayloadDataDump::NoteWord(const Type& type, T word) {
    if (!m_lines.IsQuiet()) {
        Note(sizeof(T), Describe(type, word));
    }
}

void PayloadDataDump::NoteText(const TStringCore& text) {
    if (!m_lines.IsQuiet()) {
        Note(m_countSize, QuoteForMessage(text.toStdString()));
    }
}

// Shows the first items, and one line for the others, which are read all the same.
template <typename Item>
void PayloadDataDump::DumpItems(lumsize_t count, const Item& item) {
    const lumsize_t shown = std::min(count, kShownItems);
    for (lumsize_t i = 0; i < shown; ++i) {
        item();
    }
    if (shown == count) {
        return;
    }
    const bool wasQuiet = m_lines.IsQuiet();
    const HexLines::Position begin = FindPosition();
    m_lines.SetQuiet(true);
    for (lumsize_t i = shown; i < count; ++i) {
        item();
    }
    m_lines.SetQuiet(wasQuiet);
    m_lines.Add(begin, FindPosition(), std::to_string(count - shown) + " more");
}

BinaryListType PayloadDataDump::BeginList(BinaryContainerType expected) {
    Begin();
    const BinaryListType list = m_reader.BeginListType();
    Note(1, Describe(list));
    const bool isArray = list.GetContainerType() == BinaryContainerType::ConstantArray ||
                         list.GetContainerType() == BinaryContainerType::CompositeArray;
    if (list.GetContainerType() != expected &&
        !(isArray && expected == BinaryContainerType::Array)) {
        throw PayloadFault("the type asks for a list of kind " + NameOf(expected));
    }
    return list;
}

void PayloadDataDump::EndList() {
    Begin();
    m_reader.EndListType();
    Note(2, "end mark");
}

lumsize_t PayloadDataDump::BeginSegment(const char* what) {
    Begin();
    const lumsize_t count = m_reader.BeginListData();
    Note(m_countSize, std::string("segment of ") + what + ": " + std::to_string(count));
    return count;
}

void PayloadDataDump::DumpDictionary() {
    Begin();
    const lumsize_t count = m_reader.BeginDictionaryType();
    Note(m_countSize, "dictionary of " + Count(count, "entry", "entries"));
    DumpMembers(count);
    Begin();
    m_reader.EndDictionaryType();
    Note(2, "end mark");
}

void PayloadDataDump::DumpTable() {
    Begin();
    const lumsize_t count = m_reader.BeginTableType();
    Note(m_countSize,
         "table of " + Count(count, "column", "columns") + "; first what it is sorted by, and how");
    {
        const Level level(*this);
        DumpArray(*StringType::Get());
        DumpArray(*IntType::Get32());
    }
    DumpMembers(count);
    Begin();
    m_reader.EndTableType();
    Note(2, "end mark");
}

void PayloadDataDump::DumpMembers(lumsize_t count) {
    const Level level(*this);
    for (lumsize_t i = 0; i < count; ++i) {
        Begin();
        Note(m_countSize, "key " + QuoteForMessage(m_reader.ReadStringKey().toStdString()));
        Begin();
        const auto [type, isSpecial] = m_reader.ReadKeyType();
        Note(1, "type " + type->ToString().toStdString() + (isSpecial ? ", a special value" : ""));
        const Level valueLevel(*this);
        if (isSpecial) {
            DumpKind();
        } else {
            DumpValue(*type);
        }
    }
}

void PayloadDataDump::DumpValue(const Type& type) {
    if (m_depth == kMaxDepth) {
        throw PayloadFault("values nest deeper than " + std::to_string(kMaxDepth) + " levels");
    }
    ++m_depth;
    DumpValueForm(type);
    --m_depth;
}

void PayloadDataDump::DumpValueForm(const Type& type) {
    switch (type.GetStoreType()) {
        case StoreType::Tuple:
            return DumpTuple(type);
        case StoreType::External:
            return DumpBytes();
        case StoreType::Array:
            return DumpArray(*type.As<CollectionType>().GetElementType());
        case StoreType::Set:
            return DumpSet(*type.As<CollectionType>().GetElementType());
        case StoreType::KeySet:
            return DumpKeySet(type);
        case StoreType::KeyMap:
            return DumpDictionary();
        case StoreType::Table:
            return DumpTable();
        default:
            return DumpElement(type);
    }
}

void PayloadDataDump::DumpArray(const Type& elementType) {
    const BinaryListType list = BeginList(BinaryContainerType::Array);
    const Level level(*this);
    if (list.GetContainerType() == BinaryContainerType::ConstantArray) {
        DumpConstantArray(elementType, list);
    } else if (list.GetContainerType() == BinaryContainerType::CompositeArray) {
        DumpRuns(elementType, list);
    } else {
        DumpBlock(elementType, BeginSegment("elements"));
        m_reader.EndListData();
        if (list.HasSpecials()) {
            DumpKinds(BeginSegment("kinds"));
            m_reader.EndListData();
        }
    }
    EndList();
}

void PayloadDataDump::DumpConstantArray(const Type& elementType, BinaryListType list) {
    BeginSegment("elements, all alike");
    const Level level(*this);
    if (list.HasSpecials()) {
        DumpKind();
    } else {
        DumpElement(elementType);
    }
    m_reader.EndListData();
}

void PayloadDataDump::DumpRuns(const Type& elementType, BinaryListType list) {
    const auto dumpSegment = [&](const char* what, const auto& item) {
        const lumsize_t count = BeginSegment(what);
        const Level level(*this);
        DumpItems(count, item);
        m_reader.EndListData();
    };
    dumpSegment("values of runs", [&] { DumpElement(elementType); });
    dumpSegment("kinds of runs", [&] { DumpKind(); });
    dumpSegment("lengths of runs", [&] { DumpElement(*IntType::Get32()); });
    if (list.HasIndices()) {
        DumpBlock(*IntType::Get32(), BeginSegment("indices"));
        m_reader.EndListData();
    }
}

void PayloadDataDump::DumpSet(const Type& elementType) {
    const BinaryListType list = BeginList(BinaryContainerType::Set);
    const Level level(*this);
    const lumsize_t count = BeginSegment("members");
    {
        const Level memberLevel(*this);
        DumpItems(count, [&] { DumpElement(elementType); });
    }
    m_reader.EndListData();
    if (list.HasSpecials()) {
        const lumsize_t kindCount = BeginSegment("kinds");
        const Level kindLevel(*this);
        DumpItems(kindCount, [&] { DumpKind(); });
        m_reader.EndListData();
    }
    EndList();
}

void PayloadDataDump::DumpTuple(const Type& type) {
    const auto& members = type.As<TupleType>().GetMembers();
    const BinaryListType list = BeginList(BinaryContainerType::Tuple);
    const Level level(*this);
    std::vector<SpecialKind> kinds(members.size(), SpecialKind::Normal);
    lumsize_t count = BeginSegment(list.HasSpecials() ? "kinds" : "members");
    if (count != members.size()) {
        throw PayloadFault("the type asks for " + std::to_string(members.size()) + " members");
    }
    const Level memberLevel(*this);
    if (list.HasSpecials()) {
        for (SpecialKind& kind : kinds) {
            Begin();
            kind = m_reader.ReadSpecial();
            Note(1, Describe(kind));
        }
        m_reader.EndListData();
        count = BeginSegment("members");
    }
    for (std::size_t i = 0; i < members.size(); ++i) {
        if (kinds[i] == SpecialKind::Normal) {
            DumpValue(*members[i]);
        }
    }
    m_reader.EndListData();
    EndList();
}

void PayloadDataDump::DumpBytes() {
    BeginList(BinaryContainerType::ByteBlob);
    const lumsize_t count = BeginSegment("bytes");
    const Level level(*this);
    Begin();
    m_reader.ReadStorage8BitArray(count);
    Note(1, "what the host's own functions make of it");
    m_reader.EndListData();
    EndList();
}

void PayloadDataDump::DumpKeySet(const Type& type) {
    const auto& keySet = type.As<KeySetType>();
    Begin();
    const BinaryKeySetType form = m_reader.BeginKeySetType();
    const bool hasSpecialKeys = form == BinaryKeySetType::WithSpecialKeys;
    Note(1, hasSpecialKeys ? "key set with special keys" : "key set");
    const Level level(*this);
    const auto dumpEntries = [&](const char* what, const auto& dumpKey) {
        const lumsize_t count = BeginSegment(what);
        const Level entryLevel(*this);
        DumpItems(count, [&] {
            dumpKey();
            const Level valueLevel(*this);
            DumpElement(*keySet.GetElementType());
        });
        m_reader.EndListData();
    };
    dumpEntries("entries", [&] { DumpKey(*keySet.GetKeyType()); });
    if (hasSpecialKeys) {
        dumpEntries("entries with special keys", [&] {
            Begin();
            Note(1, Describe(m_reader.ReadSpecialKey()));
        });
    }
    Begin();
    m_reader.EndKeySetType();
    Note(2, "end mark");
}

void PayloadDataDump::DumpElement(const Type& type) {
    Begin();
    switch (WordSizeOf(type)) {
        case 1:
            return NoteWord(type, m_reader.ReadStorage8Bit());
        case 4:
            return NoteWord(type, m_reader.ReadStorage32Bit());
        case 8:
            return NoteWord(type, m_reader.ReadStorage64Bit());
        default:
            break;
    }
    if (type.Is(StoreType::String)) {
        return NoteText(m_reader.ReadString());
    }
    const Level level(*this);
    DumpValue(type);
}

void PayloadDataDump::DumpKey(const Type& type) {
    Begin();
    switch (WordSizeOf(type)) {
        case 1:
            return NoteWord(type, m_reader.ReadStorage8BitKey());
        case 4:
            return NoteWord(type, m_reader.ReadStorage32BitKey());
        case 8:
            return NoteWord(type, m_reader.ReadStorage64BitKey());
        default:
            break;
    }
    if (type.Is(StoreType::String)) {
        return NoteText(m_reader.ReadStringKey());
    }
    DumpTuple(type);
}

// The elements of a plain array; of other than numbers they stand one by one.
void PayloadDataDump::DumpBlock(const Type& type, lumsize_t count) {
    const Level level(*this);
    Begin();
    switch (WordSizeOf(type)) {
        case 1:
            return DumpWords(type, m_reader.ReadStorage8BitArray(count));
        case 4:
            return DumpWords(type, m_reader.ReadStorage32BitArray(count));
        case 8:
            return DumpWords(type, m_reader.ReadStorage64BitArray(count));
        default:
            return DumpItems(count, [&] { DumpElement(type); });
    }
}

template <typename T>
void PayloadDataDump::DumpWords(const Type& type, ArrayView<const T> words) {
    DumpWords(words, [&](T word) { return Describe(type, word); });
}

template <typename T, typename DescribeWord>
void PayloadDataDump::DumpWords(ArrayView<const T> words, const DescribeWord& describe) {
    const HexLines::Position end = FindPosition();
    HexLines::Position begin = end - words.GetSize() * sizeof(T);
    const uint64 shown = std::min<uint64>(words.GetSize(), kShownItems);
    for (uint64 i = 0; i < shown; ++i, begin += sizeof(T)) {
        m_lines.Add(begin, begin + sizeof(T), describe(words[i]));
    }
    if (begin < end) {
        m_lines.Add(begin, end, std::to_string(words.GetSize() - shown) + " more");
    }
}

void PayloadDataDump::DumpKinds(lumsize_t count) {
    const Level level(*this);
    Begin();
    DumpWords(m_reader.ReadSpecialArray(count), [](SpecialKind kind) { return Describe(kind); });
}

void PayloadDataDump::DumpKind() {
    Begin();
    Note(1, Describe(m_reader.ReadSpecial()));
}

}  // namespace lumhost
