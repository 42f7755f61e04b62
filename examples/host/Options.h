#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ColumnType.h"
#include "lum/core/utility/LumSize.h"

namespace lumhost {

/// A command line that cannot be understood. what() is one line without the program's name.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class Command { Help, Show, Types, Convert, Dump, Functions, Apply, Fold, Run, Check };
enum class JsonStyle { Readable, Compact, Slim };
enum class FoldResult { Value, Scan, ScanRight };

/// What the command line asks for.
struct Options {
    Command command = Command::Help;
    std::string helpText;                 ///< of Command::Help alone
    std::optional<std::string> function;  ///< of Functions, where it may be missing, Apply and Fold
    std::string program;                  ///< the file of Run and Check
    std::string file;                     ///< of all but Functions and Check
    std::optional<std::string> keyPath;   ///< of Show and Convert
    std::optional<std::string> table;     ///< the key path that Show prints as a table
    std::optional<lum::core::lumsize_t> rows;  ///< with `table` alone
    std::optional<std::string> out;            ///< the file of Run, where it may be missing,
                                               ///< and Convert
    std::vector<std::string> columns;          ///< one or two of Apply, one of Fold
    std::vector<std::string> constants;        ///< given by --constant, in order
    std::optional<std::string> initial;        ///< of Fold, which always has it
    std::vector<std::string> prints;           ///< given by --print, in order
    bool isTimed = false;
    FoldResult fold = FoldResult::Value;
    JsonStyle style = JsonStyle::Readable;
    bool hasHeader = true;
    std::vector<std::pair<std::string, ColumnType>> types;  ///< given by --type, in order
    bool isVerbose = false;
};

/// Reads the arguments behind the program's name. Errors: UsageError.
Options ParseOptions(const std::vector<std::string>& arguments);

}  // namespace lumhost
