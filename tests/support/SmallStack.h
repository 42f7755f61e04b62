#pragma once

#include <pthread.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <stdexcept>

namespace lum::test {

#if defined(__SANITIZE_ADDRESS__)
#define LUM_TEST_LARGE_FRAMES
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LUM_TEST_LARGE_FRAMES
#endif
#endif

/// Runs `work` on a thread with a stack of 256 KiB, where whatever recurses as deep as its input
/// ends the program; four times that under AddressSanitizer, which puts guards between the locals
/// of a function. An exception comes through.
inline void OnSmallStack(const std::function<void()>& work) {
#if defined(LUM_TEST_LARGE_FRAMES)
    constexpr std::size_t kStackSize = 1 << 20;
#else
    constexpr std::size_t kStackSize = 256 << 10;
#endif
    struct Job {
        const std::function<void()>& work;
        std::exception_ptr failure;
    } job{work, nullptr};

    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kStackSize);
    pthread_t thread;
    const int error = pthread_create(
        &thread, &attributes,
        [](void* argument) -> void* {
            Job& given = *static_cast<Job*>(argument);
            try {
                given.work();
            } catch (...) {
                given.failure = std::current_exception();
            }
            return nullptr;
        },
        &job);
    pthread_attr_destroy(&attributes);
    if (error != 0) {
        throw std::runtime_error("no thread");
    }
    pthread_join(thread, nullptr);
    if (job.failure) {
        std::rethrow_exception(job.failure);
    }
}

}  // namespace lum::test
