#include "bench/vtl/ProgramText.h"

#include <array>
#include <initializer_list>
#include <random>
#include <string_view>
#include <vector>

namespace {

class ProgramMaker {
public:
    explicit ProgramMaker(std::size_t byteCount) : m_byteCount(byteCount) {
        m_text.reserve(byteCount + kLongestLine);
        while (m_names.size() < kNameCount) {
            m_names.push_back(NewName());
        }
        while (m_paths.size() < kPathCount) {
            m_paths.push_back(NewPath());
        }
    }

    std::string Make() {
        while (m_text.size() < m_byteCount) {
            AddStatement(0);
        }
        return std::move(m_text);
    }

private:
    static constexpr std::size_t kNameCount = 4000;
    static constexpr std::size_t kPathCount = 1000;  // That may be read again.
    static constexpr std::size_t kLongestLine = 4096;

    std::size_t Below(std::size_t limit) { return m_random() % limit; }
    bool OneIn(std::size_t count) { return Below(count) == 0; }
    template <std::size_t N>
    const char* OneOf(const std::array<const char*, N>& choices) {
        return choices[Below(N)];
    }
    static void Append(std::string& text, std::initializer_list<std::string_view> parts) {
        for (const std::string_view part : parts) {
            text += part;
        }
    }
    std::string Number(std::size_t limit) { return std::to_string(Below(limit)); }

    std::string NewName() {
        constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyzABCDEFGH_";
        std::string name(1, kLetters[Below(26)]);
        for (std::size_t left = 1 + Below(8) + Below(8); left > 0; --left) {
            name += kLetters[Below(sizeof(kLetters) - 1)];
        }
        return name;
    }
    const std::string& Name() { return m_names[Below(m_names.size())]; }

    std::string NewPath() {
        std::string path = Name();
        for (std::size_t left = Below(3); left > 0; --left) {
            path += '/';
            if (OneIn(40)) {
                Append(path, {"'", Name(), " ", Name(), "'"});
            } else {
                path += OneIn(20) ? Number(100) : Name();
            }
        }
        if (OneIn(8)) {
            path += OneOf(std::array{":i", ":r", ":s", ":A<i>", ":A<r>", ":K<s,r>", ":r<9,2>"});
        }
        return path;
    }
    // A key that is read: nearly always one that was written.
    const std::string& OldPath() {
        return OneIn(20) ? m_read = NewPath() : m_paths[Below(m_paths.size())];
    }
    // A key that is written: often a new one, in the place of one that was.
    const std::string& WrittenPath() {
        std::string& place = m_paths[Below(m_paths.size())];
        if (OneIn(2)) {
            place = NewPath();
        }
        return place;
    }

    std::string Literal() {
        std::string literal = ":";
        switch (Below(10)) {
            case 0:
                literal += OneIn(2) ? "true:b" : "false:b";
                break;
            case 1:
            case 2:
                Append(literal, {OneIn(4) ? "-" : "", Number(10000), ":i"});
                break;
            case 3:
            case 4:
                Append(literal, {OneIn(4) ? "-" : "", Number(10000), ".", Number(1000000), ":r"});
                break;
            case 5:
                Append(literal, {Name(), ":s"});
                break;
            case 6:
                Append(literal,
                       {"'", Name(), " ", Name(), OneIn(10) ? "\\'s " : " ", Name(), "':s"});
                break;
            case 7:
                Append(literal,
                       {"'20", std::to_string(10 + Below(90)), "-0", std::to_string(1 + Below(9)),
                        "-", std::to_string(10 + Below(19)), "':d"});
                break;
            case 8:
                Append(literal, {Number(1000), "e-", Number(20), ":r"});
                break;
            default:
                literal += "Null:r";
        }
        return literal;
    }

    std::string Function() {
        std::string function = "(";
        function += OneOf(std::array{"+", "-", "*", "<", ">", "if", "and", "length", "isNull",
                                     "year", "upperCase", "concatenate", "replaceNull", "min"});
        for (std::size_t left = 1 + Below(3); left > 0; --left) {
            function += ' ';
            function += OneIn(3) ? Literal() : OldPath();
        }
        return function + ")";
    }

    void Indent(std::size_t level) { m_text.append(2 * level, ' '); }
    void Inputs(std::size_t count) {
        for (; count > 0; --count) {
            Append(m_text, {OldPath(), " "});
        }
    }
    void Operator(std::initializer_list<std::string_view> parts) {
        m_text += "-> ";
        Append(m_text, parts);
        m_text += " ->";
    }
    void Outputs(std::size_t count) {
        for (; count > 0; --count) {
            Append(m_text, {" ", WrittenPath()});
        }
        m_text += '\n';
    }

    void AddStatement(std::size_t level) {
        Indent(level);
        switch (Below(16)) {
            case 0:
                // In a comment further right an apostrophe would take in the next lines.
                Append(m_text, {"// ", Name(), level == 0 ? "'s " : " ", Name(), "\n"});
                return;
            case 1:
                Operator({"constant ", Literal()});
                return Outputs(1);
            case 2:
                Inputs(1);
                Operator({"filter :", OneIn(2) ? "true " : "false ", Function()});
                return Outputs(1);
            case 3:
                Inputs(1 + Below(2));
                Operator({"copy"});
                return Outputs(1);
            case 4:
                Inputs(1);
                Operator({"reduce ", Literal(), " ", Function()});
                return Outputs(1);
            case 5:
                Inputs(3 + Below(4));
                Operator({OneOf(std::array{"innerJoin", "createTable", "leftOuterJoin"})});
                return Outputs(1);
            case 6:
                Inputs(1);
                Operator({OneOf(std::array{"reverse", "distinct :true", "slice", "index :3"})});
                return Outputs(1);
            case 7:
                if (level < 4) {
                    return AddConditional(level);
                }
                [[fallthrough]];
            case 8:
            case 9:
                Operator({"setValue ", Function()});
                return Outputs(1);
            case 10:
            case 11:
            case 12:
                Inputs(2);
                Operator({"zipWith ", Function()});
                return Outputs(1);
            default:
                Inputs(1);
                Operator({"map ", Function()});
                return Outputs(1);
        }
    }

    void AddConditional(std::size_t level) {
        Inputs(2);
        Operator({"case"});
        Outputs(1);
        for (const std::string_view branch :
             {std::string_view("when"), std::string_view("when"), kElse}) {
            Indent(level + 1);
            if (branch == kElse) {
                Operator({branch});
            } else {
                Operator({branch, " ", Function()});
            }
            Outputs(0);
            for (std::size_t left = 1 + Below(4); left > 0; --left) {
                AddStatement(level + 2);
            }
        }
    }

    static constexpr std::string_view kElse = "else";

    const std::size_t m_byteCount;
    std::mt19937_64 m_random{42};
    std::vector<std::string> m_names;
    std::vector<std::string> m_paths;
    std::string m_read;
    std::string m_text;
};

}  // namespace

std::string MakeProgramText(std::size_t byteCount) {
    return ProgramMaker(byteCount).Make();
}
