#pragma once

#include <gtest/gtest.h>

#include <exception>
#include <functional>
#include <string>

#include "lum/core/serialize/JsonSerializer.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"

namespace lum::test {

inline std::string Compact(const core::SV& value) {
    return core::SerializeValue(*value).toStdString();
}

inline std::string Readable(const core::SV& value) {
    core::JsonSerializer serializer(core::JsonSerializerType::Readable);
    core::SerializeValue(serializer, *value);
    return serializer.Build().toStdString();
}

/// A value, and its text in both forms.
struct JsonCase {
    core::SV value;
    std::string compact;
    std::string readable;
};

template <std::size_t N>
void ExpectJson(const JsonCase (&cases)[N]) {
    for (const JsonCase& expected : cases) {
        EXPECT_EQ(Compact(expected.value), expected.compact);
        EXPECT_EQ(Readable(expected.value), expected.readable);
    }
}

/// Whether `call` throws what is of the JSON parser or of the standard library, and none of ours.
inline bool FailsAsForeign(const std::function<void()>& call) {
    try {
        call();
    } catch (const core::LumException&) {
    } catch (const std::exception&) {
        return true;
    }
    return false;
}

}  // namespace lum::test
