#include "tests/support/ColumnText.h"

#include <algorithm>
#include <cctype>
#include <memory>
#include <optional>
#include <stdexcept>
#include <unordered_set>
#include <utility>
#include <vector>

#include "core/main/serialize/KeySetEntries.h"
#include "core/main/store/ValueSet.h"
#include "core/main/utility/Parser.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/IStoreKeyMap.h"
#include "lum/core/store/IStoreSet.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/SetFactory.h"
#include "lum/core/store/SpecialKindText.h"
#include "lum/core/store/StoreTypeDispatcher.h"
#include "lum/core/store/ValueUtil.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/TypeUtil.h"

namespace lum::test {
namespace {

using namespace core;

struct Cell {
    std::optional<std::string> literal;
    SpecialKind kind = SpecialKind::Normal;
};

class TextReader {
public:
    explicit TextReader(const std::string& text) : m_text(text) {}

    const Type* ReadType() {
        const std::string codes = "bilfrsdtc";
        const char code = Take();
        if (const std::size_t number = codes.find(code); number != std::string::npos) {
            return MakePrimitiveType(static_cast<StoreType>(number));
        }
        Expect(code == 'P' && Take() == '{');
        std::vector<const Type*> members;
        while (!TakeIf('}')) {
            members.push_back(ReadType());
            TakeIf(',');
        }
        return TupleType::Get(std::move(members));
    }

    std::vector<Cell> ReadCells() {
        std::vector<Cell> cells;
        for (SkipBlanks(); m_position < m_text.size(); SkipBlanks()) {
            Cell cell;
            if (std::optional<std::string> literal = ReadLiteral(); literal == "-") {
                cell.kind = SpecialKind::Null;
            } else {
                cell.literal = std::move(literal);
            }
            if (TakeIf('!')) {
                cell.kind = SpecialKindFromString(TStringCore::fromUtf8(ReadWord()));
            }
            cells.push_back(std::move(cell));
        }
        return cells;
    }

    bool TakeIf(char expected) {
        const bool isThere = m_position < m_text.size() && m_text[m_position] == expected;
        m_position += isThere ? 1 : 0;
        return isThere;
    }
    char Take() {
        Expect(m_position < m_text.size());
        return m_text[m_position++];
    }
    void Expect(bool condition) const {
        if (!condition) {
            throw std::invalid_argument("not the text of a column: " + m_text);
        }
    }

private:
    void SkipBlanks() {
        while (TakeIf(' ')) {
        }
    }
    std::string ReadWord() {
        const std::size_t end = std::min(m_text.find_first_of(" !", m_position), m_text.size());
        const std::string word = m_text.substr(m_position, end - m_position);
        m_position = end;
        return word;
    }
    std::optional<std::string> ReadLiteral() {
        if (TakeIf('\'')) {
            std::string literal;
            for (char c = Take(); c != '\'' || TakeIf('\''); c = Take()) {
                literal += c;
            }
            return literal;
        }
        if (TakeIf('(')) {
            const std::size_t start = m_position;
            bool isQuoted = false;
            for (char c = Take(); c != ')' || isQuoted; c = Take()) {
                isQuoted ^= c == '\'';
            }
            return m_text.substr(start, m_position - 1 - start);
        }
        std::string word = ReadWord();
        return word.empty() ? std::nullopt : std::optional(std::move(word));
    }

    const std::string m_text;
    std::size_t m_position = 0;
};

LumTuple MakeRow(const Type* type, const std::vector<Cell>& cells);

template <typename T>
T ReadValue(const Type* type, const Cell& cell) {
    if constexpr (std::is_same_v<T, SV>) {
        throw std::invalid_argument("no literals of this type");
    } else if constexpr (std::is_same_v<T, LumTuple>) {
        return MakeRow(type,
                       cell.literal ? TextReader(*cell.literal).ReadCells() : std::vector<Cell>());
    } else {
        return cell.literal ? ReadStorage<T>(type, TStringCore::fromUtf8(*cell.literal)) : T();
    }
}

LumTuple MakeRow(const Type* type, const std::vector<Cell>& cells) {
    const auto& tupleType = type->As<TupleType>();
    LumTuple row(&tupleType);
    for (lumsize_t i = 0; i < cells.size(); ++i) {
        row.SetNthSpecial(i, cells[i].kind);
        DispatchStorage(row.GetNthType(i)->GetStoreType(), [&]<typename T>(StorageTag<T>) {
            if (cells[i].literal) {
                row.SetNthValueUnsafe<T>(i, ReadValue<T>(row.GetNthType(i), cells[i]));
            }
        });
    }
    return row;
}

struct ParsedColumn {
    explicit ParsedColumn(const std::string& text) {
        TextReader reader(text);
        elementType = reader.ReadType();
        hasKinds = reader.TakeIf('!');
        reader.Expect(reader.TakeIf(':'));
        cells = reader.ReadCells();
    }

    const Type* elementType;
    bool hasKinds;
    std::vector<Cell> cells;
};

std::string NumberText(double value, int precision) {
    return TStringCore::number(value, 'g', precision).toStdString();
}

std::string DateText(LumDateTime date) {
    // What stands below a special need be no date.
    return date.IsValid() ? date.ToString().toStdString() : std::to_string(date.GetValue());
}

std::string Quoted(const std::string& text) {
    if (!text.empty() && text != "-" && std::all_of(text.begin(), text.end(), [](char c) {
            return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '-';
        })) {
        return text;
    }
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? std::string("''") : std::string(1, c);
    }
    return quoted + "'";
}

std::string TypeText(const Type* type) {
    std::string text = type->ToString().toStdString();
    if (type->Is(StoreType::String)) {
        return "s";
    }
    if (type->Is(StoreType::Tuple)) {
        text = "P{";
        for (const Type* const member : type->As<TupleType>().GetMembers()) {
            text += (text.back() == '{' ? "" : ",") + TypeText(member);
        }
        text += "}";
    }
    // Reals of the default precision have parameters in their own text, but none in ours.
    return type == RealType::Get32() ? "f" : type == RealType::Get64() ? "r" : text;
}

std::string CellText(const std::string& literal, const std::string& placeholder, SpecialKind kind) {
    if (kind == SpecialKind::Normal) {
        return literal;
    }
    const std::string under = literal == placeholder ? "" : literal;
    return under.empty() && kind == SpecialKind::Null ? "-" : under + TextOf(kind);
}

template <typename T>
std::string StoredText(const Type* type, const T& stored) {
    return TextOf(MakeStoreValueFromStorageType<T>(type, stored));
}
std::string ColumnText(const StoreValue& value) {
    const Type* const type = value.AsArray().GetElementType();
    return DispatchStorage(type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        const ITypedArray<T>& array = value.AsTypedArray<T>();
        // Rows are never special, and the default one is of another type.
        const std::string placeholder = type->Is(StoreType::Tuple) ? "" : StoredText<T>(type, T());
        std::string cells;
        bool hasSpecial = false;
        for (lumsize_t i = 0; i < array.GetCount(); ++i) {
            const SpecialKind kind = array.GetSpecialKind(i);
            hasSpecial |= kind != SpecialKind::Normal;
            cells +=
                " " + CellText(StoredText(type, array.GetValueUnchecked(i)), placeholder, kind);
        }
        return TypeText(type) + (array.HasSpecialValues() && !hasSpecial ? "!:" : ":") + cells;
    });
}

std::string Sorted(std::vector<std::string>& parts, const std::string& separator) {
    std::sort(parts.begin(), parts.end());
    std::string text;
    for (const std::string& part : parts) {
        text += (text.empty() ? "" : separator) + part;
    }
    return text;
}

std::string SetText(const IUniformCollection& set) {
    std::vector<std::string> members;
    const auto& iterable = set.GetStoreValueIterable();
    for (auto it = iterable.begin()->Clone(); *it != iterable.end(); it->Advance()) {
        members.push_back(" " + TextOf(it->Dereference()));
    }
    return "S " + TypeText(set.GetElementType()) + ":" + Sorted(members, "");
}

std::string KeySetText(const StoreValue& keySet) {
    const auto& type = keySet.GetType()->As<KeySetType>();
    const auto textOf = [](const Type* storedType, const void* stored) {
        return DispatchStorage(storedType->GetStoreType(), [&]<typename T>(StorageTag<T>) {
            return StoredText(storedType, *static_cast<const T*>(stored));
        });
    };
    const KeySetEntries entries = CollectKeySetEntries(keySet);
    std::vector<std::string> parts;
    for (const auto& [key, element] : entries.entries) {
        parts.push_back(" " + textOf(type.GetKeyType(), key) + "=" +
                        textOf(type.GetElementType(), element));
    }
    for (const auto& [kind, element] : entries.specialEntries) {
        parts.push_back(" " + TextOf(kind) + "=" + textOf(type.GetElementType(), element));
    }
    return type.ToString().toStdString() + ":" + Sorted(parts, "");
}

std::string KeyMapText(const IStoreKeyMap& map) {
    std::vector<std::string> members;
    for (const auto& [key, value] : map.GetEntries()) {
        members.push_back(key.GetValue().toStdString() + " = " + TextOf(value));
    }
    return "{" + Sorted(members, ", ") + "}";
}

}  // namespace

const Type* TypeOf(const std::string& type) {
    return TextReader(type).ReadType();
}

SV ColumnOf(const std::string& text, SortSpecOrder order) {
    ParsedColumn column(text);
    auto kinds = std::make_unique<std::vector<SpecialKind>>();
    bool hasKinds = column.hasKinds;
    for (const Cell& cell : column.cells) {
        kinds->push_back(cell.kind);
        hasKinds |= cell.kind != SpecialKind::Normal;
    }
    return DispatchStorage(column.elementType->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        auto values = std::make_unique<std::vector<T>>();
        for (const Cell& cell : column.cells) {
            values->push_back(ReadValue<T>(column.elementType, cell));
        }
        return factory::MakeArray<T>(column.elementType, std::move(values), nullptr,
                                     hasKinds ? std::move(kinds) : nullptr, order);
    });
}

SV SetOf(const std::string& text) {
    const ParsedColumn column(text);
    return DispatchStorage(column.elementType->GetStoreType(), [&]<typename T>(StorageTag<T>) {
        auto values = MakeSetContainer<T>(column.elementType, 0);
        auto kinds = std::make_unique<std::unordered_set<SpecialKind>>();
        for (const Cell& cell : column.cells) {
            if (cell.kind != SpecialKind::Normal) {
                kinds->insert(cell.kind);
            } else {
                values->insert(ReadValue<T>(column.elementType, cell));
            }
        }
        return factory::MakeSet<T>(column.elementType, std::move(values), std::move(kinds));
    });
}

LumTuple RowOf(const std::string& text) {
    const ParsedColumn row(text);
    return MakeRow(row.elementType, row.cells);
}

std::string TextOf(const LumTuple& row) {
    const LumTuple fresh(row.GetType());
    std::string text = "(";
    for (lumsize_t i = 0; i < row.GetCount(); ++i) {
        const Type* const type = row.GetNthType(i);
        text += i == 0 ? "" : " ";
        text += DispatchStorage(type->GetStoreType(), [&]<typename T>(StorageTag<T>) {
            return CellText(StoredText(type, row.GetNthValueUnsafe<T>(i)),
                            StoredText(type, fresh.GetNthValueUnsafe<T>(i)), row.GetNthSpecial(i));
        });
    }
    return text + ")";
}

std::string TextOf(SpecialKind kind) {
    return "!" + SpecialKindToString(kind).toStdString();
}

std::string TextOf(const SV& value) {
    return value == nullptr ? "null" : TextOf(*value);
}

std::string TextOf(const StoreValue& value) {
    if (value.IsSpecial()) {
        return TextOf(value.GetSpecialKind());
    }
    switch (value.GetStoreType()) {
        case StoreType::Bool:
            return value.AsBool() ? "true" : "false";
        case StoreType::Int32:
            return std::to_string(value.AsInt32());
        case StoreType::Int64:
            return std::to_string(value.AsInt64());
        case StoreType::Real32:
            return NumberText(value.AsReal32(), 9);
        case StoreType::Real64:
            return NumberText(value.AsReal64(), 17);
        case StoreType::String:
            return Quoted(value.AsString().toStdString());
        case StoreType::Date:
            return DateText(value.AsDate());
        case StoreType::DateTime:
            return DateText(value.AsDateTime());
        case StoreType::Color:
            return value.AsColor().ToString().toStdString();
        case StoreType::Tuple:
            return TextOf(value.AsTuple());
        case StoreType::Array:
            return ColumnText(value);
        case StoreType::Set:
            return SetText(value.AsUniformCollection());
        case StoreType::KeySet:
            return KeySetText(value);
        case StoreType::KeyMap:
            return KeyMapText(value.AsKeyMap());
        default:
            return StoreTypeToString(value.GetStoreType()).toStdString();
    }
}

}  // namespace lum::test
