#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <span>
#include <string>

#include "FunctionCommands.h"
#include "Program.h"
#include "lum/core/serialize/VtlParser.h"
#include "lum/core/store/IDataStore.h"
#include "lum/core/store/IStoreTable.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/LumException.h"
#include "tests/support/CollatorPoolGuard.h"
#include "tests/support/ColumnText.h"
#include "tests/support/LumErrorMatchers.h"

// What programs over the columns of a store give, and how they fail.

namespace lumhost::test {

struct OperatorCase {
    const char* program;  // Writes the key "out".
    const char* expected;
};

struct FaultCase {
    const char* program;  // Its last statement fails.
    lum::core::LumError error;
    const char* details = "";
};

class EngineFixture : public testing::Test {
protected:
    using MakeStore = std::unique_ptr<lum::core::IDataStore> (*)();

    explicit EngineFixture(MakeStore makeStore) : m_makeStore(makeStore) { StartAfresh(); }

    void StartAfresh() {
        m_store = m_makeStore();
        m_finished = 0;
    }

    void Run(const std::string& program, bool isParallel = false) {
        lumengine::RunOptions options;
        options.isParallel = isParallel;
        options.onStatement = [&](const lumengine::StatementRun&) { ++m_finished; };
        lumengine::RunProgram(
            lum::core::ParseVtlList(lum::core::TStringCore::fromUtf8(program), false), *m_store,
            *m_registry, options);
    }

    // A value as text; of a table, each column behind its name, in order of the names.
    std::string Show(const std::string& key) const {
        const lum::core::SV value = m_store->GetValue(
            lum::core::KeyPath::ParseString(lum::core::TStringCore::fromUtf8(key)));
        if (value->GetStoreType() != lum::core::StoreType::Table) {
            return lum::test::TextOf(value);
        }
        std::map<std::string, std::string> columns;
        for (const auto& [name, column] : value->AsTable().GetColumns()) {
            columns.emplace(name.GetValue().toStdString(), lum::test::TextOf(column));
        }
        std::string text;
        for (const auto& [name, column] : columns) {
            text += (text.empty() ? "" : ", ") + name + " = " + column;
        }
        return text;
    }

    void ExpectOutputs(std::span<const OperatorCase> cases) {
        for (const OperatorCase& row : cases) {
            StartAfresh();
            try {
                Run(row.program);
                EXPECT_EQ(Show("out"), row.expected) << row.program;
            } catch (const lum::core::LumException& error) {
                ADD_FAILURE() << row.program << "\n" << error.what();
            }
        }
    }

    void ExpectFaults(std::span<const FaultCase> cases) {
        for (const FaultCase& row : cases) {
            StartAfresh();
            EXPECT_TRUE(lum::test::FailsAs({row.error, row.details}, [&] { Run(row.program); }))
                << row.program;
            EXPECT_EQ(m_store->TryGetValue(lum::core::KeyPath(L"out")), nullptr) << row.program;
        }
    }

    const MakeStore m_makeStore;
    const lum::test::CollatorPoolGuard m_pool;
    std::unique_ptr<lum::core::IDataStore> m_store;
    const std::unique_ptr<lum::core::FunctionRegistry> m_registry = MakeRegistry();
    int m_finished = 0;
};

}  // namespace lumhost::test
