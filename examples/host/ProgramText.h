#pragma once

#include <string>
#include <vector>

#include "lum/core/utility/LumString.h"
#include "lum/core/vtl/TransformSpec.h"

namespace lumhost {

/// The text of a program, which knows where in its file each statement stands.
class ProgramText {
public:
    /// `name` is the file's, for messages.
    ProgramText(std::string name, const lum::core::TStringCore& text);
    /// The text of a file. Errors: FileError, also where it is not UTF-8.
    static ProgramText Read(const std::string& path);

    /// The statements, with the comments if `keepComments` says so.
    /// Errors: FileError with the line and the column at which no statement could go on.
    std::vector<lum::core::TransformSpec> Parse(bool keepComments) const;

    /// The line of the statement at `index` of Parse(false). Errors: those of Parse.
    unsigned long long FindLine(std::size_t index) const;

    const std::string& GetName() const { return m_name; }

private:
    // The text up to the line feed that ends a statement, which is none within quotes.
    struct Line {
        unsigned long long number;
        std::size_t begin;
        std::size_t end;
    };

    lum::core::TStringCore TextOf(const Line& line) const;
    [[noreturn]] void Fail(bool keepComments) const;

    std::string m_name;
    lum::core::TStringCore m_text;
    std::vector<Line> m_lines;
};

}  // namespace lumhost
