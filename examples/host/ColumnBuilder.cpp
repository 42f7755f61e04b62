#include "ColumnBuilder.h"

#include <bit>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "CellText.h"
#include "ColumnInference.h"
#include "FileError.h"
#include "Utf8.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/types/ScalarTypes.h"
#include "lum/core/types/StringType.h"

namespace lumhost {
namespace {

using namespace lum::core;

// Columns are stored as unsigned numbers of 1, 4 or 8 bytes, which hold the bits of the value, or
// as string handles.
unsigned char ToStorage(bool value) {
    return value ? 1 : 0;
}
unsigned int ToStorage(int value) {
    return std::bit_cast<unsigned int>(value);
}
unsigned int ToStorage(float value) {
    return std::bit_cast<unsigned int>(value);
}
unsigned int ToStorage(unsigned int color) {
    return color;
}
unsigned long long ToStorage(long long value) {
    return std::bit_cast<unsigned long long>(value);
}
unsigned long long ToStorage(double value) {
    return std::bit_cast<unsigned long long>(value);
}
unsigned long long ToStorage(const DateTimeFields& value) {
    return LumDateTime(value.year, value.month, value.day, value.hour, value.minute, value.second,
                       value.fraction)
        .GetValue();
}
RIndirectString ToStorage(std::string_view text) {
    return TStringCore::fromUtf8(text.data(), text.size());
}

std::optional<std::string_view> ReadText(std::string_view text) {
    return IsUtf8(text) ? std::optional(text) : std::nullopt;
}

// One class for each reader, so that the loop over the cells knows its types.
template <auto readCell>
class TypedColumnBuilder : public ColumnBuilder {
public:
    using Cell = typename decltype(readCell(std::string_view()))::value_type;
    using Storage = decltype(ToStorage(Cell()));
    static constexpr bool kIsText = std::is_same_v<Storage, RIndirectString>;

    TypedColumnBuilder(const Type* elementType, ColumnType type, const std::string& file,
                       const std::string& name, std::size_t rowCount)
        : m_elementType(elementType),
          m_type(type),
          m_file(file),
          m_name(name),
          m_rowCount(rowCount) {
        m_values->reserve(rowCount);
    }

    void Append(const CsvRows& rows, std::size_t column) override {
        const std::size_t rowCount = rows.GetRowCount();
        for (std::size_t row = 0; row < rowCount; ++row) {
            const CsvField& field = rows.GetField(row, column);
            if (IsNullField(field) || (!kIsText && field.length == 0)) {
                AppendNull();
                continue;
            }
            const auto value = readCell(field.GetText());
            if (!value) {
                Fail(rows.GetLine(row), field);
            }
            m_values->push_back(ToStorage(*value));
            if (m_specials != nullptr) {
                m_specials->push_back(SpecialKind::Normal);
            }
        }
    }

    SV Finish() override {
        return factory::MakeArray<Storage>(m_elementType, std::move(m_values), nullptr,
                                           std::move(m_specials), SortSpecOrder::UNKNOWN);
    }

private:
    void AppendNull() {
        if (m_specials == nullptr) {
            // Most columns have no Null, and an array without specials is smaller and faster.
            m_specials = std::make_unique<std::vector<SpecialKind>>();
            m_specials->reserve(m_rowCount);
            m_specials->resize(m_values->size(), SpecialKind::Normal);
        }
        m_values->push_back(m_placeholder);
        m_specials->push_back(SpecialKind::Null);
    }

    [[noreturn]] void Fail(unsigned long long line, const CsvField& field) const {
        const std::string fault =
            kIsText ? "is not UTF-8" : std::string("cannot be read as ") + GetName(m_type);
        throw FileError(m_file, line,
                        "column " + QuoteForMessage(m_name) + ": " +
                            QuoteForMessage(field.GetText()) + " " + fault);
    }

    const Type* m_elementType;
    // Stands under each Null. A valid value of the type, since some readers of a column take its
    // values without asking for the kinds.
    const Storage m_placeholder = ToStorage(Cell());
    ColumnType m_type;
    std::string m_file;
    std::string m_name;
    std::size_t m_rowCount;
    std::unique_ptr<std::vector<Storage>> m_values = std::make_unique<std::vector<Storage>>();
    std::unique_ptr<std::vector<SpecialKind>> m_specials;  // Null while every cell has a value.
};

}  // namespace

std::unique_ptr<ColumnBuilder> MakeColumnBuilder(ColumnType type, const std::string& file,
                                                 const std::string& name, std::size_t rowCount) {
    const auto make = [&]<auto readCell>(const Type* elementType) {
        return std::make_unique<TypedColumnBuilder<readCell>>(elementType, type, file, name,
                                                              rowCount);
    };
    switch (type) {
        case ColumnType::Bool:
            return make.template operator()<ReadBool>(BoolType::Get());
        case ColumnType::Int32:
            return make.template operator()<ReadInt32>(IntType::Get32());
        case ColumnType::Int64:
            return make.template operator()<ReadInt64>(IntType::Get64());
        case ColumnType::Real32:
            return make.template operator()<ReadReal32>(RealType::Get32());
        case ColumnType::Real64:
            return make.template operator()<ReadReal64>(RealType::Get64());
        case ColumnType::String:
            return make.template operator()<ReadText>(StringType::Get());
        case ColumnType::Date:
            return make.template operator()<ReadDate>(DateType::Get());
        case ColumnType::DateTime:
            return make.template operator()<ReadDateTime>(DateTimeType::Get());
        case ColumnType::Color:
            return make.template operator()<ReadColor>(ColorType::Get());
    }
    return nullptr;
}

}  // namespace lumhost
