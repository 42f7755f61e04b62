#include "Options.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "HelpTexts.h"

namespace lumhost {
namespace {

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

void SetOnce(std::optional<std::string>& setting, const char* name, std::string text) {
    if (setting) {
        throw UsageError(std::string(name) + " is given twice");
    }
    setting = std::move(text);
}

void SetRows(Options& options, const std::string& text) {
    lum::core::lumsize_t rows = 0;
    const char* const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, rows);
    if (error != std::errc() || behind != end) {
        throw UsageError("'" + text + "' is not a number of rows" + kSeeHelp);
    }
    options.rows = rows;
}

Command ParseCommand(const std::string& name) {
    constexpr std::pair<const char*, Command> kCommands[] = {{"show", Command::Show},
                                                             {"types", Command::Types},
                                                             {"convert", Command::Convert},
                                                             {"dump", Command::Dump},
                                                             {"functions", Command::Functions},
                                                             {"apply", Command::Apply},
                                                             {"fold", Command::Fold},
                                                             {"run", Command::Run},
                                                             {"check", Command::Check},
                                                             {"--help", Command::Help},
                                                             {"-h", Command::Help}};
    for (const auto& [text, command] : kCommands) {
        if (name == text) {
            return command;
        }
    }
    throw UsageError("'" + name + "' is not a command" + kSeeHelp);
}

constexpr unsigned BitOf(Command command) {
    return 1u << static_cast<unsigned>(command);
}
constexpr unsigned kReadsStore = BitOf(Command::Show) | BitOf(Command::Types) |
                                 BitOf(Command::Convert) | BitOf(Command::Apply) |
                                 BitOf(Command::Fold) | BitOf(Command::Run);

struct Flag {
    const char* name;
    unsigned commands;
    void (*set)(Options&);
};
constexpr Flag kFlags[] = {
    {"--verbose", ~0u, [](Options& options) { options.isVerbose = true; }},
    {"--no-header", kReadsStore, [](Options& options) { options.hasHeader = false; }},
    {"--compact", BitOf(Command::Show),
     [](Options& options) { SetStyle(options, JsonStyle::Compact); }},
    {"--slim", BitOf(Command::Show), [](Options& options) { SetStyle(options, JsonStyle::Slim); }},
    {"--scan", BitOf(Command::Fold), [](Options& options) { SetFold(options, FoldResult::Scan); }},
    {"--scan-right", BitOf(Command::Fold),
     [](Options& options) { SetFold(options, FoldResult::ScanRight); }},
    {"--time", BitOf(Command::Run), [](Options& options) { options.isTimed = true; }},
};

struct Setting {
    const char* name;
    const char* what;  // Of the value.
    unsigned commands;
    void (*set)(Options&, std::string);
};
constexpr Setting kSettings[] = {
    {"--type", "NAME=CODE", kReadsStore,
     [](Options& options, std::string text) { AddType(options, text); }},
    {"--table", "a KEYPATH", BitOf(Command::Show),
     [](Options& options, std::string text) {
         SetOnce(options.table, "--table", std::move(text));
     }},
    {"--rows", "a number", BitOf(Command::Show),
     [](Options& options, std::string text) { SetRows(options, text); }},
    {"--print", "a KEYPATH", BitOf(Command::Run),
     [](Options& options, std::string text) { options.prints.push_back(std::move(text)); }},
    {"--out", "a FILE", BitOf(Command::Run),
     [](Options& options, std::string text) { SetOnce(options.out, "--out", std::move(text)); }},
    {"--constant", "a LITERAL", BitOf(Command::Apply),
     [](Options& options, std::string text) { options.constants.push_back(std::move(text)); }},
    {"--initial", "a LITERAL", BitOf(Command::Fold),
     [](Options& options, std::string text) {
         SetOnce(options.initial, "--initial", std::move(text));
     }},
};

// The value of the option, where it stands at `index`: behind a '=', or the next argument,
// to which `index` then moves.
std::optional<std::string> TryTakeValue(const Setting& setting,
                                        const std::vector<std::string>& arguments,
                                        std::size_t& index) {
    const std::string& argument = arguments[index];
    const std::string name = setting.name;
    if (argument.starts_with(name + '=')) {
        return argument.substr(name.size() + 1);
    }
    if (argument != name) {
        return std::nullopt;
    }
    if (index + 1 == arguments.size()) {
        throw UsageError(name + " needs " + setting.what + " behind it" + kSeeHelp);
    }
    return arguments[++index];
}

// Takes in the option at `index`; false where the command has no such option.
bool TakeOption(Options& options, const std::vector<std::string>& arguments, std::size_t& index) {
    const unsigned command = BitOf(options.command);
    for (const Flag& flag : kFlags) {
        if ((flag.commands & command) != 0 && arguments[index] == flag.name) {
            flag.set(options);
            return true;
        }
    }
    for (const Setting& setting : kSettings) {
        if ((setting.commands & command) == 0) {
            continue;
        }
        if (auto value = TryTakeValue(setting, arguments, index)) {
            setting.set(options, std::move(*value));
            return true;
        }
    }
    return false;
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
    if (options.command == Command::Convert) {
        options.out = positionals.Take("file to write");
    }
    if (options.command == Command::Show || options.command == Command::Convert) {
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

void CheckTable(const Options& options) {
    if (options.rows && !options.table) {
        throw UsageError("--rows needs --table");
    }
    if (options.table && (options.keyPath || options.style != JsonStyle::Readable)) {
        throw UsageError("--table excludes a second KEYPATH, --compact and --slim");
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
        return MakeHelp(HelpOf(Command::Help));
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
    CheckTable(options);
    return options;
}

}  // namespace lumhost
