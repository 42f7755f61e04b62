#include "Options.h"

#include <algorithm>
#include <string_view>

namespace lumhost {
namespace {

constexpr const char* kHelp =
    R"(lumhost: shows comma-separated files as typed columns

usage:
  lumhost show  FILE.csv [KEYPATH] [OPTION...]   print the columns, or one value, as JSON
  lumhost types FILE.csv [OPTION...]             print each column's name and type
  lumhost --help

'lumhost show --help' lists the options and says how types are found.
Exit status: 0 done, 1 the data is at fault, 2 the command line is at fault.
)";

constexpr const char* kShowUsage =
    R"(usage: lumhost show FILE.csv [KEYPATH] [OPTION...]

Reads FILE.csv into one key map of columns and prints it as JSON, or the value at KEYPATH alone.
A key path is a column's name, or a column's name and a row counted from 0: weather, weather/12.
A name that is not one word is written in single quotes: "'Body Mass (g)'/0".

  --compact         print the store on one line
  --slim            the same for web clients: keys without types, colours as integers; the value at
                    a KEYPATH is on one line, with colours in hexadecimal, whatever the options
)";

constexpr const char* kTypesUsage =
    R"(usage: lumhost types FILE.csv [OPTION...]

Reads FILE.csv and prints each column's name and type, one to a line, in the order of the file:
weather:A<s> is a column "weather", which is an array of strings.

)";

constexpr const char* kImportHelp =
    R"(  --no-header       the first row is data; the columns are called c1, c2, c3, ...
  --type NAME=CODE  read the column NAME as the type CODE, whatever its cells look like; may be
                    given for several columns. Codes: b Bool, i Int32, l Int64, f Real32, r Real64,
                    s String, d Date, t DateTime, c Color
  --verbose         write the library's log to the standard error output
  --                what follows is no option

The file is UTF-8, with fields as RFC 4180 has them: in double quotes a field may hold commas, line
ends and doubled quotes, and blanks belong to the field. All rows have as many fields as the first
one, and every column a name of its own. A faulty row is reported as FILE:LINE, and nothing is
printed then.

An empty cell and the cell NA are Null. In quotes they are text: "" is the empty text, or Null where
the column is not a String, and "NA" is text.

A column gets the narrowest type that all its cells fit without losing anything:
  Bool      true, false (or True, False, TRUE, FALSE)
  Int32     digits with an optional sign; Int64 where 32 bits are too few. Leading zeros, as in 007,
            and numbers beyond 64 bits make the column a String
  Real64    numbers with a decimal point or an exponent, 1.5 or 2e-3, among them integers up to 2^53
  Date      YYYY-MM-DD, a day of the calendar in the years 400 to 23829
  DateTime  YYYY-MM-DDTHH:MM:SS with up to four decimals, among them dates
  String    anything else, also when no cell has a value
Cells read as Color are eight hexadecimal digits: alpha, red, green, blue.
)";

constexpr const char* kSeeHelp = " (see 'lumhost --help')";

bool IsOption(std::string_view argument) {
    return argument.size() > 1 && argument[0] == '-';
}

std::pair<std::string, ColumnType> ParseType(const std::string& text) {
    // The last '=': a name may hold one, a code may not.
    const std::size_t equals = text.rfind('=');
    if (equals == std::string::npos || equals == 0) {
        throw UsageError("'--type " + text + "' is not of the form NAME=CODE" + kSeeHelp);
    }
    const std::string code = text.substr(equals + 1);
    const std::optional<ColumnType> type =
        code.size() == 1 ? ColumnTypeFromCode(code[0]) : std::nullopt;
    if (!type) {
        throw UsageError("'" + code + "' is not a type code; one of b i l f r s d t c" + kSeeHelp);
    }
    return {text.substr(0, equals), *type};
}

Options MakeHelp(std::string text) {
    Options options;
    options.helpText = std::move(text);
    return options;
}

std::string HelpOf(Command command) {
    return std::string(command == Command::Show ? kShowUsage : kTypesUsage) + kImportHelp;
}

void AddType(Options& options, const std::string& text) {
    std::pair<std::string, ColumnType> type = ParseType(text);
    const bool isKnown = std::any_of(options.types.begin(), options.types.end(),
                                     [&](const auto& other) { return other.first == type.first; });
    if (isKnown) {
        throw UsageError("--type is given twice for '" + type.first + "'");
    }
    options.types.push_back(std::move(type));
}

void SetStyle(Options& options, JsonStyle style) {
    if (options.style != JsonStyle::Readable && options.style != style) {
        throw UsageError("--compact and --slim exclude each other");
    }
    options.style = style;
}

void AddPositional(Options& options, const std::string& argument) {
    if (options.file.empty()) {
        if (argument.empty()) {
            throw UsageError(std::string("the file name is empty") + kSeeHelp);
        }
        options.file = argument;
    } else if (options.command == Command::Show && !options.keyPath) {
        options.keyPath = argument;
    } else {
        throw UsageError("'" + argument + "' is one argument too many" + kSeeHelp);
    }
}

}  // namespace

Options ParseOptions(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        throw UsageError(std::string("a command is missing") + kSeeHelp);
    }
    Options options;
    if (arguments[0] == "--help" || arguments[0] == "-h") {
        return MakeHelp(kHelp);
    }
    if (arguments[0] == "show") {
        options.command = Command::Show;
    } else if (arguments[0] == "types") {
        options.command = Command::Types;
    } else {
        throw UsageError("'" + arguments[0] + "' is not a command" + kSeeHelp);
    }

    constexpr std::string_view kTypeWithValue = "--type=";
    bool takesOptions = true;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        const bool isShow = options.command == Command::Show;
        if (!takesOptions || !IsOption(argument)) {
            AddPositional(options, argument);
        } else if (argument == "--") {
            takesOptions = false;
        } else if (argument == "--help" || argument == "-h") {
            return MakeHelp(HelpOf(options.command));
        } else if (argument == "--no-header") {
            options.hasHeader = false;
        } else if (argument == "--verbose") {
            options.isVerbose = true;
        } else if (argument == "--compact" && isShow) {
            SetStyle(options, JsonStyle::Compact);
        } else if (argument == "--slim" && isShow) {
            SetStyle(options, JsonStyle::Slim);
        } else if (argument.starts_with(kTypeWithValue)) {
            AddType(options, argument.substr(kTypeWithValue.size()));
        } else if (argument == "--type") {
            if (i + 1 == arguments.size()) {
                throw UsageError(std::string("--type needs NAME=CODE behind it") + kSeeHelp);
            }
            AddType(options, arguments[++i]);
        } else {
            throw UsageError("'" + argument + "' is not an option of " + arguments[0] + kSeeHelp);
        }
    }
    if (options.file.empty()) {
        throw UsageError("'" + arguments[0] + "' needs the name of a file" + kSeeHelp);
    }
    return options;
}

}  // namespace lumhost
