#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

namespace lum::core {

/// Makes objects of one class in batches: those of a batch stand in one block of the heap, share
/// one count of owners and die together. For small heads that come in numbers and keep nothing
/// alive but what they all share, as the columns of a payload do: two trips to the heap for each
/// would cost more than all else.
///
/// The first object stands alone, then come batches of 8 and of 64.
///
/// Threads: one at a time makes objects; their last owner may be on any.
template <typename T>
class SharedBatch {
public:
    template <typename... Arguments>
    std::shared_ptr<T> Make(Arguments&&... arguments) {
        if (m_capacity == 0) {
            m_capacity = 1;
            return std::make_shared<T>(std::forward<Arguments>(arguments)...);
        }
        if (m_batch == nullptr || m_batch->count == m_capacity) {
            m_capacity = std::min(m_capacity * 8, kMaxCapacity);
            m_batch = std::make_shared<Batch>(m_capacity);
        }
        T* const object =
            std::construct_at(reinterpret_cast<T*>(m_batch->places[m_batch->count].bytes),
                              std::forward<Arguments>(arguments)...);
        ++m_batch->count;
        return {m_batch, object};
    }

private:
    static constexpr std::size_t kMaxCapacity = 64;

    struct Place {
        alignas(T) std::byte bytes[sizeof(T)];
    };
    struct Batch {
        explicit Batch(std::size_t capacity)
            : places(std::make_unique_for_overwrite<Place[]>(capacity)) {}
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;
        ~Batch() {
            for (std::size_t i = 0; i < count; ++i) {
                std::destroy_at(std::launder(reinterpret_cast<T*>(places[i].bytes)));
            }
        }

        std::unique_ptr<Place[]> places;
        std::size_t count = 0;
    };

    std::size_t m_capacity = 0;  // Of the last batch, 1 where it was a single object.
    std::shared_ptr<Batch> m_batch;
};

}  // namespace lum::core
