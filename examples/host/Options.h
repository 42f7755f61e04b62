#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ColumnType.h"

namespace lumhost {

/// A command line that cannot be understood. what() is one line without the program's name.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

enum class Command { Help, Show, Types };
enum class JsonStyle { Readable, Compact, Slim };

/// What the command line asks for.
struct Options {
    Command command = Command::Help;
    std::string helpText;  ///< of Command::Help alone
    std::string file;
    std::optional<std::string> keyPath;
    JsonStyle style = JsonStyle::Readable;
    bool hasHeader = true;
    std::vector<std::pair<std::string, ColumnType>> types;  ///< given by --type, in order
    bool isVerbose = false;
};

/// Reads the arguments behind the program's name. Errors: UsageError.
Options ParseOptions(const std::vector<std::string>& arguments);

}  // namespace lumhost
