#pragma once

#include <cstdio>
#include <functional>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "lumsys/AsyncTask.h"
#include "lumsys/TThreadPool.h"

namespace lum::test {

/// Makes the pool anew, without hooks.
inline void MakePool(unsigned int threads) {
    lumsys::TThreadPool::Configure(threads, {}, {}, {});
    lumsys::TThreadPool::Get();
}

inline lumsys::AsyncTask::Future<void> OnPool(std::function<void()> function) {
    return lumsys::AsyncTask::Schedule(std::move(function), lumsys::AsyncTask::LaunchMode::Pool);
}

/// Whether `statement` throws the type `Error` itself, with this key and the name that has it.
template <typename Error>
bool FailsWithKey(unsigned int key, const std::function<void()>& statement) {
    const bool isLogic = std::is_same_v<Error, lumsys::LogicException>;
    char name[64];
    std::snprintf(name, sizeof(name), "%s_0x%08X",
                  isLogic ? "LogicException_LogicAssert" : "LumeraException_AutoGen", key);
    try {
        statement();
    } catch (const lumsys::LumeraError& error) {
        return typeid(error) == typeid(Error) && error.GetKey() == key &&
               error.GetName().toStdString() == name;
    }
    return false;
}

}  // namespace lum::test
