// Interning a known name of 10 characters: at most 0.45 of a std::unordered_map under a
// std::shared_mutex, and two threads not slower in total than one.
#include <benchmark/benchmark.h>

#include <mutex>
#include <shared_mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "lum/core/utility/RInternString.h"

namespace lum::core {
namespace {

class PeerTable {
public:
    explicit PeerTable(const std::vector<TStringCore>& names) {
        for (const TStringCore& name : names) {
            m_ids.emplace(std::u16string(name.view()), m_ids.size());
        }
    }
    std::size_t Find(const std::u16string& name) const {
        const std::shared_lock lock(m_mutex);
        return m_ids.find(name)->second;
    }

private:
    mutable std::shared_mutex m_mutex;
    std::unordered_map<std::u16string, std::size_t> m_ids;
};

struct Input {
    std::vector<TStringCore> names;
    std::vector<std::u16string> peerNames;
    PeerTable peer;
    uint64 firstId;

    explicit Input(std::size_t count) : names(MakeNames(count)), peer(names) {
        firstId = RInternString(names[0]).GetStringId();
        for (const TStringCore& name : names) {
            static_cast<void>(RInternString(name));
            peerNames.emplace_back(name.view());
        }
    }
    static std::vector<TStringCore> MakeNames(std::size_t count) {
        std::vector<TStringCore> names;
        for (std::size_t i = 0; i < count; ++i) {
            const std::string digits = std::to_string(1000000 + i * 7919 % 1000000);
            names.push_back(TStringCore::fromUtf8((count < 10000 ? "col" : "nam") + digits));
        }
        return names;
    }
};

const Input& GetInput(std::size_t count) {
    static const Input s_few(1000);
    static const Input s_many(100000);
    return count == 1000 ? s_few : s_many;
}

// A stride that visits all names, out of order, as the names of a program come.
std::size_t Next(std::size_t at, std::size_t count) {
    return (at + 617) % count;
}

void BM_Intern(benchmark::State& state) {
    const Input& input = GetInput(static_cast<std::size_t>(state.range(0)));
    const std::size_t count = input.names.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (RInternString(input.names[i]).GetStringId() - input.firstId !=
            input.peer.Find(input.peerNames[i])) {
            return state.SkipWithError("result differs from the peer");
        }
    }
    std::size_t at = static_cast<std::size_t>(state.thread_index());
    for (auto _ : state) {
        benchmark::DoNotOptimize(RInternString(input.names[at]));
        at = Next(at, count);
    }
    state.SetItemsProcessed(state.iterations());
}

void BM_InternPeer(benchmark::State& state) {
    const Input& input = GetInput(static_cast<std::size_t>(state.range(0)));
    std::size_t at = static_cast<std::size_t>(state.thread_index());
    for (auto _ : state) {
        benchmark::DoNotOptimize(input.peer.Find(input.peerNames[at]));
        at = Next(at, input.names.size());
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Intern)
    ->Name("BM_Intern/Lum")
    ->Arg(1000)
    ->Arg(100000)
    ->ThreadRange(1, 2)
    ->UseRealTime();
BENCHMARK(BM_InternPeer)
    ->Name("BM_Intern/LockedMap")
    ->Arg(1000)
    ->Arg(100000)
    ->ThreadRange(1, 2)
    ->UseRealTime();

}  // namespace
}  // namespace lum::core
