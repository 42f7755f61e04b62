#include "ProgramText.h"

#include <algorithm>
#include <string_view>

#include "FileError.h"
#include "TextInput.h"
#include "lum/core/serialize/VtlParser.h"
#include "lum/core/utility/LumException.h"

namespace lumhost {

using namespace lum::core;

namespace {

std::u16string_view Blanks() {
    return u" \t\r\n";
}

bool IsStatement(const TStringCore& line) {
    try {
        ParseVtlLine(line);
        return true;
    } catch (const LumRuntimeException&) {
        return false;
    }
}

// Whether a statement can begin like this.
bool IsBeginning(const TStringCore& text) {
    const wchar_t* const endings[] = {L"", L" -> x", L") -> x", L" -> copy -> x", L" copy -> x"};
    return std::any_of(std::begin(endings), std::end(endings), [&](const wchar_t* ending) {
        return IsStatement(TStringCore(text).append(ending));
    });
}

// Where words that stand between blanks end. Blanks in quotes separate none.
std::vector<std::size_t> FindWordEnds(std::u16string_view line) {
    std::vector<std::size_t> ends = {0};
    bool isInQuotes = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (line[i] == u'\\') {
            ++i;
        } else if (line[i] == u'\'') {
            isInQuotes = !isInQuotes;
        } else if (!isInQuotes && i > 0 && Blanks().find(line[i]) != std::u16string_view::npos &&
                   Blanks().find(line[i - 1]) == std::u16string_view::npos) {
            ends.push_back(i);
        }
    }
    if (ends.back() < line.size()) {
        ends.push_back(line.size());
    }
    return ends;
}

// The column, from 1, of the first word with which no statement can go on.
std::size_t FindColumn(const TStringCore& line) {
    std::size_t good = 0;
    if (!IsStatement(line)) {
        const std::vector<std::size_t> ends = FindWordEnds(line.view());
        // What goes on after more words goes on after fewer.
        const auto bad = std::partition_point(
            ends.begin(), ends.end(), [&](std::size_t end) { return IsBeginning(line.left(end)); });
        good = bad == ends.begin() ? 0 : *(bad - 1);
    }
    const std::size_t word = line.view().find_first_not_of(Blanks(), good);
    return (word == std::u16string_view::npos ? good : word) + 1;
}

}  // namespace

// The parser ends lines in the same way.
ProgramText::ProgramText(std::string name, const TStringCore& text)
    : m_name(std::move(name)), m_text(text) {
    const std::u16string_view units = m_text.view();
    Line line{1, 0, 0};
    unsigned long long number = 1;
    bool isInQuotes = false;
    bool isEscaped = false;
    bool isComment = false;
    for (std::size_t i = 0; i < units.size(); ++i) {
        if ((i == 0 || units[i - 1] == u'\n') && units.substr(i).starts_with(u"//")) {
            isComment = true;
        }
        number += units[i] == u'\n' ? 1 : 0;
        if (isEscaped) {
            isEscaped = false;
        } else if (units[i] == u'\n' && !isInQuotes) {
            line.end = i;
            m_lines.push_back(line);
            line = {number, i + 1, i + 1};
            isComment = false;
        } else if (!isComment) {
            isEscaped = units[i] == u'\\';
            isInQuotes = isInQuotes != (units[i] == u'\'');
        }
    }
    line.end = units.size();
    m_lines.push_back(line);
}

ProgramText ProgramText::Read(const std::string& path) {
    return ProgramText(path, ReadText(path));
}

std::vector<TransformSpec> ProgramText::Parse(bool keepComments) const {
    try {
        return ParseVtlList(m_text, keepComments);
    } catch (const LumRuntimeException&) {
        Fail(keepComments);
    }
}

// The first line whose end the parser does not reach, with what it says of it.
void ProgramText::Fail(bool keepComments) const {
    const auto fails = [&](const Line& line) {
        try {
            ParseVtlList(m_text.left(line.end), keepComments);
            return false;
        } catch (const LumRuntimeException&) {
            return true;
        }
    };
    const auto line = std::partition_point(m_lines.begin(), m_lines.end(),
                                           [&](const Line& some) { return !fails(some); });
    const Line& last = line == m_lines.end() ? m_lines.back() : *line;
    try {
        ParseVtlList(m_text.left(last.end), keepComments);
    } catch (const LumRuntimeException& error) {
        throw FileError(m_name, last.number, FindColumn(TextOf(last)), MessageOf(error));
    }
    throw FileError(m_name, 0, "this is no program");
}

unsigned long long ProgramText::FindLine(std::size_t index) const {
    for (const Line& line : m_lines) {
        const TStringCore text = TextOf(line);
        const bool isNested = text.startsWith(L"  ");
        if (isNested || text.trimmed().isEmpty() ||
            ParseVtlLine(text).GetOperatorType() == OperatorType::NoOp) {
            continue;
        }
        if (index-- == 0) {
            return line.number;
        }
    }
    return 0;
}

TStringCore ProgramText::TextOf(const Line& line) const {
    return m_text.mid(line.begin, line.end - line.begin);
}

}  // namespace lumhost
