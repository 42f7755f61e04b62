#include "lum/core/vtl/SortSpecTypes.h"

#include "lum/core/Check.h"

namespace lum::core {

TStringCore SortSpecOrderToString(SortSpecOrder order) {
    switch (order) {
        case SortSpecOrder::UNKNOWN:
            return L"UNKNOWN";
        case SortSpecOrder::ASC:
            return L"ASC";
        case SortSpecOrder::DESC:
            return L"DESC";
        case SortSpecOrder::UNORD:
            return L"UNORD";
    }
    detail::FailLogic({__FILE__, __LINE__, ""}, LumError::Unspecified, L"Unknown sort order");
}

}  // namespace lum::core
