#include "core/main/serialize/StoreValueParser_MakeKeySetHelper_def.h"

namespace lum::core::StoreValueParser {

template SV MakeKeySetOver<RIndirectString>(const KeySetType&, const IJsonObject&);
template SV MakeKeySetOver<LumTuple>(const KeySetType&, const IJsonObject&);

}  // namespace lum::core::StoreValueParser
