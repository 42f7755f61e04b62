#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

#include "FunctionCommands.h"
#include "Program.h"
#include "lum/core/serialize/StoreValueSerializer.h"
#include "lum/core/serialize/VtlParser.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"

// What programs over the columns of a store give, and how they fail.

namespace lumhost::test {

struct OperatorCase {
    const char* name;
    const char* program;  // Writes the key "out".
    const char* expected;
};

struct FaultCase {
    const char* name;
    const char* program;
    lum::core::LumError error;
    const char* details = "";
};

inline void PrintTo(const OperatorCase& testCase, std::ostream* out) {
    *out << testCase.name;
}
inline void PrintTo(const FaultCase& testCase, std::ostream* out) {
    *out << testCase.name;
}

class EngineFixture : public testing::Test {
protected:
    explicit EngineFixture(std::unique_ptr<lum::core::IDataStore> store)
        : m_store(std::move(store)) {}

    void Run(const std::string& program, bool isParallel = false) {
        lumengine::RunOptions options;
        options.isParallel = isParallel;
        options.onStatement = [&](const lumengine::StatementRun&) { ++m_finished; };
        lumengine::RunProgram(
            lum::core::ParseVtlList(lum::core::TStringCore::fromUtf8(program), false), *m_store,
            *m_registry, options);
    }

    std::string Show(const char* key) const {
        const lum::core::SV value = m_store->GetValue(
            lum::core::KeyPath::ParseString(lum::core::TStringCore::fromUtf8(key)));
        return value->GetStoreType() == lum::core::StoreType::KeyMap ||
                       value->GetStoreType() == lum::core::StoreType::Table
                   ? lum::core::SerializeValue(*value).toStdString()
                   : lum::test::TextOf(value);
    }

    // Whatever stands before the last statement of the program has run; the last one stores
    // nothing.
    void ExpectFault(const FaultCase& testCase) {
        try {
            Run(testCase.program);
            FAIL() << "nothing was thrown";
        } catch (const lum::core::LumRuntimeException& error) {
            const std::string text = error.what();
            EXPECT_EQ(error.GetError(), testCase.error) << text;
            EXPECT_TRUE(text.ends_with(testCase.details)) << text;
        }
        EXPECT_EQ(m_store->TryGetValue(lum::core::KeyPath(L"out")), nullptr);
    }

    const lum::test::CollatorPoolGuard m_pool;
    std::unique_ptr<lum::core::IDataStore> m_store;
    const std::unique_ptr<lum::core::FunctionRegistry> m_registry = MakeRegistry();
    int m_finished = 0;
};

}  // namespace lumhost::test
