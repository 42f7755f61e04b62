#include "ColumnCells.h"

#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>

#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/ArrayAdapter.h"
#include "lum/core/store/IUniformCollection.h"
#include "lum/core/types/TypeUtil.h"

namespace lumhost {
namespace {

using namespace lum::core;

template <typename T>
void AppendNumber(std::string& text, T value) {
    char digits[32];
    const auto [end, error] = std::to_chars(std::begin(digits), std::end(digits), value);
    text.append(digits, end);
}

void AppendBool(std::string& text, bool value) {
    text += value ? "true" : "false";
}

template <typename T>
void AppendReal(std::string& text, T value) {
    if (!std::isfinite(value)) {
        text += std::isnan(value) ? "nan" : value > 0 ? "+inf" : "-inf";
        return;
    }
    const std::size_t begin = text.size();
    AppendNumber(text, value);
    if (std::string_view(text).find_first_of(".e", begin) == std::string_view::npos) {
        text += ".0";
    }
}

void AppendText(std::string& text, const RIndirectString& value) {
    text += value.toStdString();
}

void AppendDate(std::string& text, LumDateTime value) {
    text += value.ToString().toStdString();
}

void AppendDateTime(std::string& text, LumDateTime value) {
    AppendDate(text, value);
    text += value.HasTime() ? "" : "T00:00:00";
}

void AppendColor(std::string& text, LumColor value) {
    text += value.ToString().toStdString();
}

// One class for each type, so that a cell costs one virtual call and no allocation.
template <typename T, void (*append)(std::string&, T)>
class PlainCells : public ColumnCells {
public:
    explicit PlainCells(const SV& column)
        : m_array(column), m_cell(m_array.GetAdapterWithSpecials()) {}

    SpecialKind TakeNext(std::string& text) override {
        const SpecialKind kind = m_cell.GetSpecialKind();
        if (kind == SpecialKind::Normal) {
            append(text, *m_cell);
        }
        m_cell.Advance();
        return kind;
    }

private:
    using Element = std::remove_cvref_t<T>;

    ArrayAdapter<Element> m_array;
    ArrayCursor<Element> m_cell;
};

// Cells that are rows, values of the host's own and collections.
class BoxedCells : public ColumnCells {
public:
    explicit BoxedCells(SV column)
        : m_column(std::move(column)),
          m_cell(m_column->AsUniformCollection().GetStoreValueIterable().begin()->Clone()) {}

    SpecialKind TakeNext(std::string& text) override {
        const SV value = m_cell->Dereference();
        m_cell->Advance();
        if (!value->IsSpecial()) {
            const bool isNested =
                IsCollectionStoreType(value) && value->GetStoreType() != StoreType::Tuple;
            text += isNested ? value->GetType()->ToString().toStdString() + " x " +
                                   std::to_string(value->GetCount())
                             : SerializeValue(*value).toStdString();
        }
        return value->GetSpecialKind();
    }

private:
    SV m_column;
    std::unique_ptr<IStoreValueIterator> m_cell;
};

}  // namespace

std::unique_ptr<ColumnCells> MakeColumnCells(const SV& column) {
    switch (column->AsArray().GetElementType()->GetStoreType()) {
        case StoreType::Bool:
            return std::make_unique<PlainCells<bool, AppendBool>>(column);
        case StoreType::Int32:
            return std::make_unique<PlainCells<int, AppendNumber<int>>>(column);
        case StoreType::Int64:
            return std::make_unique<PlainCells<long long, AppendNumber<long long>>>(column);
        case StoreType::Real32:
            return std::make_unique<PlainCells<float, AppendReal<float>>>(column);
        case StoreType::Real64:
            return std::make_unique<PlainCells<double, AppendReal<double>>>(column);
        case StoreType::String:
            return std::make_unique<PlainCells<const RIndirectString&, AppendText>>(column);
        case StoreType::Date:
            return std::make_unique<PlainCells<LumDateTime, AppendDate>>(column);
        case StoreType::DateTime:
            return std::make_unique<PlainCells<LumDateTime, AppendDateTime>>(column);
        case StoreType::Color:
            return std::make_unique<PlainCells<LumColor, AppendColor>>(column);
        default:
            return std::make_unique<BoxedCells>(column);
    }
}

bool IsPlain(const Type& elementType) {
    const StoreType type = elementType.GetStoreType();
    return IsPrimitiveStoreType(type) && type != StoreType::External;
}

}  // namespace lumhost
