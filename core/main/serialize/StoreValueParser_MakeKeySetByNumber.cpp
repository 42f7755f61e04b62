#include "core/main/serialize/StoreValueParser_MakeKeySetHelper_def.h"

namespace lum::core::StoreValueParser {

template SV MakeKeySetOver<unsigned char>(const KeySetType&, const IJsonObject&);
template SV MakeKeySetOver<unsigned int>(const KeySetType&, const IJsonObject&);
template SV MakeKeySetOver<unsigned long long>(const KeySetType&, const IJsonObject&);

}  // namespace lum::core::StoreValueParser
