// Key paths of four segments, 65,536 of them over 1,000 names of 6 to 14 characters: copied, found,
// compared, sorted, read from text and written as text. Held: a copy within 1.1 of a shared_ptr's
// and a number's; a look-up within 0.5 of one by the path's text; equality within 1.5 of a loop
// over ids that stand in one block, and sorting within 1.1 of the same order over lists of strings;
// reading within 2.0 of a split with a look-up of each name; writing with a cache within 2.5 of a
// join of texts that stand ready, and below 0.7 of writing without.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "core/main/serialize/KeyPathSerializer.h"
#include "lum/core/store/KeyPath.h"
#include "lum/core/types/CollectionTypes.h"
#include "lum/core/types/HeterogeneousTypes.h"
#include "lum/core/types/ScalarTypes.h"

namespace {

using lum::core::ArrayType;
using lum::core::IntType;
using lum::core::KeyMapType;
using lum::core::KeyPath;
using lum::core::KeyPathSerializerCache;
using lum::core::KeySegment;
using lum::core::RealType;
using lum::core::RInternString;
using lum::core::TStringCore;
using lum::core::Type;

constexpr std::size_t kPathCount = 65'536;
constexpr std::size_t kNameCount = 1'000;
constexpr std::size_t kDepth = 4;

struct Input {
    std::vector<std::u16string> names;
    std::vector<std::size_t> segments;  // Numbers of names, kDepth a path.
    std::vector<KeyPath> paths;
    std::vector<KeyPath> samePaths;  // With segments of their own.
    std::vector<KeyPath> typedPaths;
    std::vector<TStringCore> texts;
    std::vector<std::u16string> plainTexts;
    std::vector<std::u16string> typedTexts;  // Of the names.
};

const Type* TypeOf(std::size_t name) {
    switch (name % 4) {
        case 0:
            return KeyMapType::Get({{L"x", IntType::Get32()}, {L"y", RealType::Get64()}});
        case 1:
            return ArrayType::Get(RealType::Get64(9, 2));
        case 2:
            return IntType::Get64();
        default:
            return nullptr;
    }
}

Input MakeInput() {
    Input input;
    std::mt19937_64 random(42);
    std::unordered_set<std::u16string> known;
    while (input.names.size() < kNameCount) {
        std::u16string name;
        for (auto left = 6 + random() % 9; left > 0; --left) {
            name += static_cast<char16_t>(u'a' + random() % 26);
        }
        if (known.insert(name).second) {
            const KeySegment segment(TStringCore(name), TypeOf(input.names.size()));
            input.typedTexts.emplace_back(segment.ToString().view());
            input.names.push_back(std::move(name));
        }
    }
    for (std::size_t i = 0; i < kPathCount * kDepth; ++i) {
        input.segments.push_back(random() % kNameCount);
    }
    // One list after the other, so that each lies in memory in its order as the peers' lists do.
    for (std::vector<KeyPath>* paths : {&input.paths, &input.samePaths, &input.typedPaths}) {
        for (std::size_t i = 0; i < kPathCount; ++i) {
            std::vector<KeySegment> segments;
            segments.reserve(kDepth);
            for (std::size_t at = i * kDepth; at < (i + 1) * kDepth; ++at) {
                const std::size_t name = input.segments[at];
                segments.emplace_back(TStringCore(input.names[name]),
                                      paths == &input.typedPaths ? TypeOf(name) : nullptr);
            }
            paths->emplace_back(std::move(segments));
        }
    }
    for (const KeyPath& path : input.paths) {
        input.texts.push_back(path.ToString());
        input.plainTexts.emplace_back(input.texts.back().view());
    }
    return input;
}

const Input& GetInput() {
    static const Input s_input = MakeInput();
    return s_input;
}

void CountPaths(benchmark::State& state) {
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kPathCount));
}

// Copies ------------------------------------------------------------------------------------------

void BM_CopyPath(benchmark::State& state) {
    const Input& input = GetInput();
    if (std::vector<KeyPath>(input.paths) != input.paths) {
        return state.SkipWithError("the copies differ");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::vector<KeyPath>(input.paths));
    }
    CountPaths(state);
}
BENCHMARK(BM_CopyPath)->Unit(benchmark::kMicrosecond);

void BM_CopyByHand(benchmark::State& state) {
    struct Shared {
        std::shared_ptr<const std::vector<KeySegment>> segments;
        unsigned long long hash;
    };
    std::vector<Shared> originals;
    for (const KeyPath& path : GetInput().samePaths) {
        originals.push_back({std::make_shared<const std::vector<KeySegment>>(path.GetSegments()),
                             path.GetHashValue()});
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::vector<Shared>(originals));
    }
    CountPaths(state);
}
BENCHMARK(BM_CopyByHand)->Unit(benchmark::kMicrosecond);

// Look-ups ----------------------------------------------------------------------------------------

template <typename Key>
void FindAll(benchmark::State& state, const std::vector<Key>& known,
             const std::vector<Key>& wanted) {
    std::unordered_map<Key, std::size_t> places;
    for (std::size_t i = 0; i < known.size(); ++i) {
        places.emplace(known[i], i);
    }
    std::size_t found = 0;
    for (auto _ : state) {
        found = 0;
        for (const Key& key : wanted) {
            found += places.find(key) != places.end() ? 1 : 0;
        }
    }
    if (found != wanted.size()) {
        state.SkipWithError("some are not found");
    }
    CountPaths(state);
}

void BM_FindPath(benchmark::State& state) {
    FindAll(state, GetInput().paths, GetInput().samePaths);
}
BENCHMARK(BM_FindPath)->Unit(benchmark::kMicrosecond);

void BM_FindText(benchmark::State& state) {
    FindAll(state, GetInput().plainTexts, GetInput().plainTexts);
}
BENCHMARK(BM_FindText)->Unit(benchmark::kMicrosecond);

// Comparisons -------------------------------------------------------------------------------------

void BM_HashPath(benchmark::State& state) {
    const Input& input = GetInput();
    unsigned long long sum = 0;
    for (auto _ : state) {
        sum = 0;
        for (const KeyPath& path : input.paths) {
            sum += path.GetHashValue();
        }
        benchmark::DoNotOptimize(sum);
    }
    CountPaths(state);
}
BENCHMARK(BM_HashPath)->Unit(benchmark::kMicrosecond);

void BM_HashText(benchmark::State& state) {
    const Input& input = GetInput();
    for (auto _ : state) {
        std::size_t sum = 0;
        for (const std::u16string& text : input.plainTexts) {
            sum += std::hash<std::u16string>()(text);
        }
        benchmark::DoNotOptimize(sum);
    }
    CountPaths(state);
}
BENCHMARK(BM_HashText)->Unit(benchmark::kMicrosecond);

void BM_EqualPaths(benchmark::State& state) {
    const Input& input = GetInput();
    std::size_t count = 0;
    for (auto _ : state) {
        count = 0;
        for (std::size_t i = 0; i < kPathCount; ++i) {
            count += input.paths[i] == input.samePaths[i] ? 1 : 0;
        }
        benchmark::DoNotOptimize(count);
    }
    if (count != kPathCount) {
        state.SkipWithError("equal paths differ");
    }
    CountPaths(state);
}
BENCHMARK(BM_EqualPaths)->Unit(benchmark::kMicrosecond);

void BM_EqualByHand(benchmark::State& state) {
    struct Segment {
        unsigned long long id;
        const TStringCore* text;
        const Type* type;

        bool operator==(const Segment& other) const { return id == other.id; }
    };
    using Segments = std::shared_ptr<const std::vector<Segment>>;
    const auto make = [](const std::vector<KeyPath>& paths) {
        std::vector<Segments> lists;
        for (const KeyPath& path : paths) {
            std::vector<Segment> list;
            for (const KeySegment& segment : path.GetSegments()) {
                list.push_back({segment.GetSegment().GetStringId(), nullptr, nullptr});
            }
            lists.push_back(std::make_shared<const std::vector<Segment>>(std::move(list)));
        }
        return lists;
    };
    const std::vector<Segments> left = make(GetInput().paths);
    const std::vector<Segments> right = make(GetInput().samePaths);
    for (auto _ : state) {
        std::size_t count = 0;
        for (std::size_t i = 0; i < kPathCount; ++i) {
            count += *left[i] == *right[i] ? 1 : 0;
        }
        benchmark::DoNotOptimize(count);
    }
    CountPaths(state);
}
BENCHMARK(BM_EqualByHand)->Unit(benchmark::kMicrosecond);

// Sorts numbers of paths, so that both sides move the same bytes.
template <typename Less>
std::vector<unsigned int> SortedNumbers(const Less& less) {
    std::vector<unsigned int> numbers(kPathCount);
    for (std::size_t i = 0; i < kPathCount; ++i) {
        numbers[i] = static_cast<unsigned int>(i);
    }
    std::stable_sort(numbers.begin(), numbers.end(), less);
    return numbers;
}

std::vector<unsigned int> SortPaths() {
    const std::vector<KeyPath>& paths = GetInput().paths;
    return SortedNumbers([&](unsigned int left, unsigned int right) {
        return KeyPath::Compare()(paths[left], paths[right]);
    });
}

void BM_SortByHand(benchmark::State& state) {
    std::vector<std::vector<std::u16string>> lists(kPathCount);
    for (std::size_t i = 0; i < kPathCount; ++i) {
        for (std::size_t at = 0; at < kDepth; ++at) {
            lists[i].push_back(GetInput().names[GetInput().segments[i * kDepth + at]]);
        }
    }
    const auto sort = [&] {
        return SortedNumbers([&](unsigned int left, unsigned int right) {
            return lists[left].size() != lists[right].size()
                       ? lists[left].size() < lists[right].size()
                       : lists[left] < lists[right];
        });
    };
    if (sort() != SortPaths()) {
        return state.SkipWithError("the orders differ");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(sort());
    }
    CountPaths(state);
}
BENCHMARK(BM_SortByHand)->Unit(benchmark::kMillisecond);

void BM_SortPaths(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(SortPaths());
    }
    CountPaths(state);
}
BENCHMARK(BM_SortPaths)->Unit(benchmark::kMillisecond);

// Text --------------------------------------------------------------------------------------------

void BM_ReadPaths(benchmark::State& state) {
    const Input& input = GetInput();
    for (std::size_t i = 0; i < kPathCount; ++i) {
        if (KeyPath::ParseString(input.texts[i]) != input.paths[i]) {
            return state.SkipWithError("a path reads as another one");
        }
    }
    for (auto _ : state) {
        for (const TStringCore& text : input.texts) {
            benchmark::DoNotOptimize(KeyPath::ParseString(text));
        }
    }
    CountPaths(state);
}
BENCHMARK(BM_ReadPaths)->Unit(benchmark::kMillisecond);

// Knows neither quotes, nor numbers, nor types, nor blanks.
void BM_ReadByHand(benchmark::State& state) {
    const Input& input = GetInput();
    struct Segment {
        std::size_t name;
        const std::u16string* text;
        const Type* type;
    };
    std::unordered_map<std::u16string_view, Segment> known;
    for (std::size_t i = 0; i < kNameCount; ++i) {
        known.emplace(input.names[i], Segment{i, &input.names[i], nullptr});
    }
    const auto read = [&](std::u16string_view text) {
        std::vector<Segment> segments;
        for (std::size_t start = 0; start <= text.size();) {
            const std::size_t end = std::min(text.find(u'/', start), text.size());
            segments.push_back(known.find(text.substr(start, end - start))->second);
            start = end + 1;
        }
        return std::make_shared<const std::vector<Segment>>(std::move(segments));
    };
    for (auto _ : state) {
        for (const std::u16string& text : input.plainTexts) {
            benchmark::DoNotOptimize(read(text));
        }
    }
    CountPaths(state);
}
BENCHMARK(BM_ReadByHand)->Unit(benchmark::kMillisecond);

TStringCore WriteAll(KeyPathSerializerCache* cache) {
    TStringCore text;
    for (const KeyPath& path : GetInput().typedPaths) {
        lum::core::AppendKeyPath(text, path, /*includeTypes=*/true, cache);
        text += u'\n';
    }
    return text;
}

void BM_WritePaths(benchmark::State& state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(WriteAll(nullptr));
    }
    CountPaths(state);
}
BENCHMARK(BM_WritePaths)->Unit(benchmark::kMillisecond);

void BM_WritePathsWithCache(benchmark::State& state) {
    for (auto _ : state) {
        KeyPathSerializerCache cache;
        benchmark::DoNotOptimize(WriteAll(&cache));
    }
    CountPaths(state);
}
BENCHMARK(BM_WritePathsWithCache)->Unit(benchmark::kMillisecond);

// Finds the texts by the names' ids, which are next to each other here.
void BM_WriteByHand(benchmark::State& state) {
    const Input& input = GetInput();
    std::vector<std::u16string> texts;
    for (std::size_t i = 0; i < kNameCount; ++i) {
        const unsigned long long id = RInternString(TStringCore(input.names[i])).GetStringId();
        texts.resize(std::max<std::size_t>(texts.size(), id + 1));
        texts[id] = input.typedTexts[i];
    }
    const auto write = [&] {
        std::u16string text;
        for (const KeyPath& path : input.typedPaths) {
            const std::size_t start = text.size();
            for (const KeySegment& segment : path.GetSegments()) {
                if (text.size() != start) {
                    text += u'/';
                }
                text += texts[segment.GetSegment().GetStringId()];
            }
            text += u'\n';
        }
        return text;
    };
    KeyPathSerializerCache cache;
    if (write() != WriteAll(&cache).view() || write() != WriteAll(nullptr).view()) {
        return state.SkipWithError("the texts differ");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(write());
    }
    CountPaths(state);
}
BENCHMARK(BM_WriteByHand)->Unit(benchmark::kMillisecond);

}  // namespace
