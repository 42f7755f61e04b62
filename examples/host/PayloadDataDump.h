#pragma once

#include <stdexcept>
#include <string>

#include "HexLines.h"
#include "PayloadHeaderDump.h"
#include "lum/core/serialize/BinaryProtocolReader.h"

namespace lumhost {

/// What no reader of values would take, though each of its bytes can be read.
class PayloadFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Adds the lines of a payload's data.
///
/// Threads: one thread at a time. Ownership: the reader and the lines have to outlive the object.
class PayloadDataDump {
public:
    /// `reader` stands at the root.
    PayloadDataDump(lum::core::BinaryProtocolReader& reader, const PayloadHeader& header,
                    HexLines& lines);

    /// From the root to its end. Errors: PayloadFault, and those of the reader. The lines are those
    /// of all that was read before.
    void Dump();

    /// Where the event begins that was read last, or that failed.
    HexLines::Position GetPosition() const { return m_begin; }

private:
    class Level;

    HexLines::Position FindPosition() const;
    void Begin() { m_begin = FindPosition(); }
    void Note(unsigned int wordSize, const std::string& meaning);
    template <typename T>
    void NoteWord(const lum::core::Type& type, T word);
    void NoteText(const lum::core::TStringCore& text);
    template <typename Item>
    void DumpItems(lum::core::lumsize_t count, const Item& item);

    lum::core::BinaryListType BeginList(lum::core::BinaryContainerType expected);
    lum::core::lumsize_t BeginSegment(const char* what);
    void EndList();

    void DumpDictionary();
    void DumpTable();
    void DumpMembers(lum::core::lumsize_t count);
    void DumpValue(const lum::core::Type& type);
    void DumpValueForm(const lum::core::Type& type);
    void DumpArray(const lum::core::Type& elementType);
    void DumpConstantArray(const lum::core::Type& elementType, lum::core::BinaryListType list);
    void DumpRuns(const lum::core::Type& elementType, lum::core::BinaryListType list);
    void DumpSet(const lum::core::Type& elementType);
    void DumpTuple(const lum::core::Type& type);
    void DumpBytes();
    void DumpKeySet(const lum::core::Type& type);
    void DumpElement(const lum::core::Type& type);
    void DumpKey(const lum::core::Type& type);
    void DumpBlock(const lum::core::Type& type, lum::core::lumsize_t count);
    template <typename T>
    void DumpWords(const lum::core::Type& type, lum::core::ArrayView<const T> words);
    template <typename T, typename DescribeWord>
    void DumpWords(lum::core::ArrayView<const T> words, const DescribeWord& describe);
    void DumpKinds(lum::core::lumsize_t count);
    void DumpKind();

    lum::core::BinaryProtocolReader& m_reader;
    HexLines& m_lines;
    const unsigned int m_countSize;
    const HexLines::Position m_end;  // Of the data, and of the file.
    const HexLines::Position m_start;
    HexLines::Position m_begin;
    unsigned int m_depth = 0;
};

}  // namespace lumhost
