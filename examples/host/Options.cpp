#include "Options.h"

#include <algorithm>
#include <string_view>

namespace lumhost {
namespace {

constexpr const char* kHelp =
    R"(lumhost: shows comma-separated files as typed columns, and applies functions to them

usage:
  lumhost show  FILE.csv [KEYPATH] [OPTION...]   print the columns, or one value, as JSON
  lumhost types FILE.csv [OPTION...]             print each column's name and type
  lumhost functions [NAME]                       list the built-in functions
  lumhost apply FUNCTION FILE.csv COLUMN [COLUMN] [--constant LITERAL...] [OPTION...]
                                                 print a function's results for one or two columns
  lumhost fold FUNCTION FILE.csv COLUMN --initial LITERAL [--scan|--scan-right] [OPTION...]
                                                 print what a function makes of a whole column
  lumhost run PROGRAM.vtl FILE.csv [--print KEYPATH...] [--time] [OPTION...]
                                                 run a program over the columns
  lumhost check PROGRAM.vtl                      read a program and print it as it was understood
  lumhost --help

'lumhost show --help' lists the options and says how types are found; the other commands take
--help as well.
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

constexpr const char* kFunctionsUsage =
    R"(usage: lumhost functions [NAME]

Lists the built-in functions, all or those called NAME: the types of the inputs and of the output,
the forms, and the flags. Symbols have to be quoted for the shell: lumhost functions "<".

  regular       the form that takes plain elements
  special       the form that takes elements with their kinds, so that Null and its like have rules
  creator (T)   made anew for each use from values of the types T, which 'lumhost apply' takes by
                --constant
  stateful      carries state from element to element
  list (T)      computes one value from a list of values, and cannot be applied to columns

AnyType stands for a column of collections, and in a list for a value of any type.

  --verbose         write the library's log to the standard error output
)";

constexpr const char* kApplyUsage =
    R"(usage: lumhost apply FUNCTION FILE.csv COLUMN [COLUMN] [--constant LITERAL...] [OPTION...]

Applies a function of one input to each element of a COLUMN, or one of two inputs to the elements of
two columns pair by pair, and prints the results as a JSON array. COLUMN is the plain name of a
column. The types of the columns choose among the functions that share a name; 'lumhost functions'
lists them.

Where a column has specials (Null), the special form of the function says what becomes of them. A
function without one is given the other elements only, and what is special stays special in the
result, with the same kind.

  --constant LITERAL   a value that the function is made from, of the type that the function says;
                       a function that is made from a set takes it several times, once a member

)";

constexpr const char* kFoldUsage =
    R"(usage: lumhost fold FUNCTION FILE.csv COLUMN --initial LITERAL [--scan|--scan-right] [OPTION...]

Walks down a COLUMN with an accumulator, which FUNCTION replaces at each element by a value made of
both, and prints the last one as JSON. Where the column or the initial value is special, the special
form of the function is used. A function without one is given the elements that are not special
only; countAll, which does not look at them, is given all.

  --initial LITERAL    the accumulator at the start; Null for none, where there is a special form.
                       It has the type of the column, or, for functions that count, Int32
  --scan               print the accumulator as it stands at each element, as an array
  --scan-right         the same, walking up from the last element

)";

constexpr const char* kRunUsage =
    R"(usage: lumhost run PROGRAM.vtl FILE.csv [--print KEYPATH...] [--time] [OPTION...]

Reads FILE.csv, whose columns then stand in a store under their names, and runs the statements of
PROGRAM.vtl, a text in UTF-8, over them; docs/vtl.md teaches the language. Then prints, as
KEYPATH: JSON, each value that is asked for; without --print, what the program wrote, as
lumhost types does. Statements that do not depend on each other run at once.

  --print KEYPATH   print the value at the key path; may be given several times
  --time            print for each statement its line, operator, rows, and rows per second

)";

constexpr const char* kCheckUsage =
    R"(usage: lumhost check PROGRAM.vtl

Reads a program and prints it as it was understood, with comments that have a line of their own.
A statement that is none is reported as FILE:LINE:COLUMN. Nothing is run, so that a function that is
not there is found by 'lumhost run' alone.

  --verbose         write the library's log to the standard error output
)";

constexpr const char* kLiteralHelp =
    R"(
A LITERAL is written as a cell of the file is, or is the name of a special kind, as Null or Missing.
Texts, dates and colours may stand in single quotes, with \\, \' and \n for a backslash, a quote and
a line end; nothing in quotes is special, so "'Null'" is a text.
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
    switch (command) {
        case Command::Show:
            return std::string(kShowUsage) + kImportHelp;
        case Command::Types:
            return std::string(kTypesUsage) + kImportHelp;
        case Command::Functions:
            return kFunctionsUsage;
        case Command::Apply:
            return std::string(kApplyUsage) + kImportHelp + kLiteralHelp;
        case Command::Fold:
            return std::string(kFoldUsage) + kImportHelp + kLiteralHelp;
        case Command::Run:
            return std::string(kRunUsage) + kImportHelp;
        case Command::Check:
            return kCheckUsage;
        case Command::Help:
            break;
    }
    return kHelp;
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

void SetFold(Options& options, FoldResult fold) {
    if (options.fold != FoldResult::Value && options.fold != fold) {
        throw UsageError("--scan and --scan-right exclude each other");
    }
    options.fold = fold;
}

void SetInitial(Options& options, std::string text) {
    if (options.initial) {
        throw UsageError("--initial is given twice");
    }
    options.initial = std::move(text);
}

Command ParseCommand(const std::string& name) {
    constexpr std::pair<const char*, Command> kCommands[] = {
        {"show", Command::Show},   {"types", Command::Types}, {"functions", Command::Functions},
        {"apply", Command::Apply}, {"fold", Command::Fold},   {"run", Command::Run},
        {"check", Command::Check}, {"--help", Command::Help}, {"-h", Command::Help}};
    for (const auto& [text, command] : kCommands) {
        if (name == text) {
            return command;
        }
    }
    throw UsageError("'" + name + "' is not a command" + kSeeHelp);
}

// The value of the option `name`, where it stands at `index`: behind a '=', or the next argument,
// to which `index` then moves.
std::optional<std::string> TryTakeValue(const std::string& name, const char* what,
                                        const std::vector<std::string>& arguments,
                                        std::size_t& index) {
    const std::string& argument = arguments[index];
    if (argument.starts_with(name + '=')) {
        return argument.substr(name.size() + 1);
    }
    if (argument != name) {
        return std::nullopt;
    }
    if (index + 1 == arguments.size()) {
        throw UsageError(name + " needs " + what + " behind it" + kSeeHelp);
    }
    return arguments[++index];
}

// Takes in the option at `index`; false where the command has no such option.
bool TakeOption(Options& options, const std::vector<std::string>& arguments, std::size_t& index) {
    const std::string& argument = arguments[index];
    const Command command = options.command;
    if (argument == "--verbose") {
        options.isVerbose = true;
        return true;
    }
    if (command == Command::Functions || command == Command::Check) {
        return false;
    }
    if (argument == "--no-header") {
        options.hasHeader = false;
    } else if (const auto type = TryTakeValue("--type", "NAME=CODE", arguments, index)) {
        AddType(options, *type);
    } else if (argument == "--compact" && command == Command::Show) {
        SetStyle(options, JsonStyle::Compact);
    } else if (argument == "--slim" && command == Command::Show) {
        SetStyle(options, JsonStyle::Slim);
    } else if (argument == "--scan" && command == Command::Fold) {
        SetFold(options, FoldResult::Scan);
    } else if (argument == "--scan-right" && command == Command::Fold) {
        SetFold(options, FoldResult::ScanRight);
    } else if (argument == "--time" && command == Command::Run) {
        options.isTimed = true;
    } else if (command == Command::Run) {
        auto keyPath = TryTakeValue("--print", "a KEYPATH", arguments, index);
        if (keyPath) {
            options.prints.push_back(std::move(*keyPath));
        }
        return keyPath.has_value();
    } else if (command == Command::Apply) {
        auto constant = TryTakeValue("--constant", "a LITERAL", arguments, index);
        if (constant) {
            options.constants.push_back(std::move(*constant));
        }
        return constant.has_value();
    } else if (command == Command::Fold) {
        auto initial = TryTakeValue("--initial", "a LITERAL", arguments, index);
        if (initial) {
            SetInitial(options, std::move(*initial));
        }
        return initial.has_value();
    } else {
        return false;
    }
    return true;
}

// The arguments that are no options, in the order in which a command takes them.
class Positionals {
public:
    Positionals(std::string command, std::vector<std::string> texts)
        : m_command(std::move(command)), m_texts(std::move(texts)) {}

    std::string Take(const std::string& what) {
        std::optional<std::string> text = TryTake();
        if (!text) {
            throw UsageError("'" + m_command + "' needs the name of a " + what + kSeeHelp);
        }
        if (text->empty()) {
            throw UsageError("the " + what + " name is empty" + kSeeHelp);
        }
        return std::move(*text);
    }
    std::optional<std::string> TryTake() {
        return m_next == m_texts.size() ? std::nullopt
                                        : std::optional(std::move(m_texts[m_next++]));
    }
    void ExpectEnd() {
        if (const auto text = TryTake()) {
            throw UsageError("'" + *text + "' is one argument too many" + kSeeHelp);
        }
    }

private:
    std::string m_command;
    std::vector<std::string> m_texts;
    std::size_t m_next = 0;
};

void AssignPositionals(Options& options, Positionals positionals) {
    if (options.command == Command::Functions) {
        options.function = positionals.TryTake();
    } else if (options.command == Command::Apply || options.command == Command::Fold) {
        options.function = positionals.Take("function");
    }
    if (options.command == Command::Run || options.command == Command::Check) {
        options.program = positionals.Take("program");
    }
    if (options.command != Command::Functions && options.command != Command::Check) {
        options.file = positionals.Take("file");
    }
    if (options.command == Command::Show) {
        options.keyPath = positionals.TryTake();
    } else if (options.command == Command::Apply || options.command == Command::Fold) {
        options.columns.push_back(positionals.Take("column"));
    }
    if (options.command == Command::Apply) {
        if (auto column = positionals.TryTake()) {
            options.columns.push_back(std::move(*column));
        }
    }
    positionals.ExpectEnd();
    if (options.command == Command::Fold && !options.initial) {
        throw UsageError(std::string("'fold' needs --initial LITERAL") + kSeeHelp);
    }
}

}  // namespace

Options ParseOptions(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        throw UsageError(std::string("a command is missing") + kSeeHelp);
    }
    Options options;
    options.command = ParseCommand(arguments[0]);
    if (options.command == Command::Help) {
        return MakeHelp(kHelp);
    }
    std::vector<std::string> positionals;
    bool takesOptions = true;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (!takesOptions || !IsOption(argument)) {
            positionals.push_back(argument);
        } else if (argument == "--") {
            takesOptions = false;
        } else if (argument == "--help" || argument == "-h") {
            return MakeHelp(HelpOf(options.command));
        } else if (!TakeOption(options, arguments, i)) {
            throw UsageError("'" + argument + "' is not an option of " + arguments[0] + kSeeHelp);
        }
    }
    AssignPositionals(options, Positionals(arguments[0], std::move(positionals)));
    return options;
}

}  // namespace lumhost
