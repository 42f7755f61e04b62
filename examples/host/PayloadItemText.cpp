#include "PayloadItemText.h"

#include <vector>

#include "ColumnCells.h"
#include "FileError.h"
#include "lum/core/store/ArrayFactory.h"
#include "lum/core/store/SpecialKindText.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"

namespace lumhost {

using namespace lum::core;

namespace {

template <typename T>
std::string DescribeWord(const Type& type, T word) {
    try {
        const SV column =
            factory::MakeArray<T>(&type, std::vector<T>{word}, SortSpecOrder::UNKNOWN);
        std::string text;
        MakeColumnCells(column)->TakeNext(text);
        return text;
    } catch (const LumRuntimeException& error) {
        return MessageOf(error);
    }
}

}  // namespace

std::string NameOf(BinaryContainerType container) {
    constexpr const char* kNames[] = {"nothing",        "array", "bytes", "composite array",
                                      "constant array", "set",   "tuple", "nothing"};
    return kNames[static_cast<unsigned int>(container)];
}

std::string Describe(BinaryListType list) {
    constexpr const char* kOrders[] = {"", ", ascending", ", descending", ", unordered"};
    return "list: " + NameOf(list.GetContainerType()) + (list.HasSpecials() ? ", specials" : "") +
           (list.HasIndices() ? ", indices" : "") +
           kOrders[static_cast<unsigned int>(list.GetSortOrder())];
}

std::string Describe(SpecialKind kind) {
    try {
        return kind == SpecialKind::Normal ? "ordinary" : SpecialKindToString(kind).toStdString();
    } catch (const LumRuntimeException&) {
        return "a kind without a name";
    }
}

std::string Describe(const Type& type, unsigned char word) {
    return DescribeWord(type, word);
}
std::string Describe(const Type& type, unsigned int word) {
    return DescribeWord(type, word);
}
std::string Describe(const Type& type, uint64 word) {
    return DescribeWord(type, word);
}

unsigned int WordSizeOf(const Type& type) {
    switch (type.GetStoreType()) {
        case StoreType::Bool:
            return 1;
        case StoreType::Int32:
        case StoreType::Real32:
        case StoreType::Color:
            return 4;
        case StoreType::Int64:
        case StoreType::Real64:
        case StoreType::Date:
        case StoreType::DateTime:
            return 8;
        default:
            return 0;
    }
}

}  // namespace lumhost
