#pragma once

#include <barrier>
#include <cstddef>
#include <thread>
#include <vector>

namespace lum::test {

/// Calls `function` with 0, 1, ... on as many threads, which begin at one moment.
template <typename Function>
void RunTogether(std::size_t threadCount, const Function& function) {
    std::barrier start(static_cast<std::ptrdiff_t>(threadCount));
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < threadCount; ++i) {
        threads.emplace_back([&, i] {
            start.arrive_and_wait();
            function(i);
        });
    }
}

}  // namespace lum::test
