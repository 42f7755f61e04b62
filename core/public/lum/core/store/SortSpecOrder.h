#pragma once

namespace lum::core {

/// What is stated of the order of an array's elements or a table's rows. Whoever makes the
/// collection states it; nothing checks it against the data.
enum class SortSpecOrder : unsigned char { UNKNOWN = 0, ASC = 1, DESC = 2, UNORD = 3 };

}  // namespace lum::core
