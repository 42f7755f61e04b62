// Import of a file of a million rows and six columns, one of each common type. Held: at least
// 60 MB/s, and a peak of memory, that of the whole process, of at most 3 times the columns' own
// size. The peer is reading the bytes of the file, which no import can undercut.

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <bit>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "CsvImport.h"
#include "CsvReader.h"
#include "Progress.h"
#include "TextSource.h"
#include "lum/core/store/IStoreArray.h"
#include "lum/core/store/ITypedArray.h"
#include "lum/core/store/StoreValue.h"
#include "lum/core/utility/Collation.h"

namespace {

using lumhost::NamedColumn;

constexpr unsigned kRows = 1'000'000;
constexpr double kHeldSpeed = 60.0;  // MB/s
constexpr double kHeldPeak = 3.0;    // Times the columns.

// The file, which is made once and removed at the end, and what a right import adds up to.
class BigFile {
public:
    BigFile()
        : m_path(std::filesystem::temp_directory_path() /
                 ("lum_csv_import_" + std::to_string(getpid()) + ".csv")) {
        constexpr const char* kWeather[] = {"rain", "sun", "fog", "drizzle", "snow", "cloudy"};
        std::mt19937_64 random(42);
        std::ofstream out(m_path, std::ios::binary);
        out << "weather,day,count,id,level,wet\n";
        char number[32];
        for (unsigned row = 0; row < kRows; ++row) {
            const auto draw = [&](unsigned long long limit) { return random() % limit; };
            const double level = static_cast<double>(draw(2'000'000'000)) / 1e6 - 1000.0;
            const unsigned day = 1 + static_cast<unsigned>(draw(28));
            const bool hasLevel = draw(50) != 0;
            m_levelSum += hasLevel ? level : 0.0;
            const auto end = std::to_chars(number, number + sizeof(number), level).ptr;
            out << kWeather[draw(6)] << ',' << 1950 + draw(70) << (day < 10 ? "-07-0" : "-07-")
                << day << ',' << draw(200'000) << ',' << draw(1ULL << 50) << ','
                << std::string_view(number, hasLevel ? static_cast<std::size_t>(end - number) : 0)
                << ',' << (draw(2) == 0 ? "true" : "false") << '\n';
        }
    }
    ~BigFile() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }

    std::string GetPath() const { return m_path.string(); }
    double GetMegabytes() const {
        return static_cast<double>(std::filesystem::file_size(m_path)) / 1e6;
    }
    double GetLevelSum() const { return m_levelSum; }

private:
    std::filesystem::path m_path;
    double m_levelSum = 0.0;  // In the order of the rows.
};

const BigFile& GetFile() {
    static const BigFile file;
    return file;
}

void SetSpeed(benchmark::State& state) {
    state.counters["MB/s"] =
        benchmark::Counter(GetFile().GetMegabytes(), benchmark::Counter::kIsIterationInvariantRate);
}

std::vector<NamedColumn> Import() {
    const std::unique_ptr<lumhost::TextSource> source =
        lumhost::OpenTextSource(GetFile().GetPath());
    lumhost::Progress progress(std::cerr, /*isTerminal=*/false, "");
    return lumhost::ImportCsv(*source, {}, progress);
}

bool IsRight(const std::vector<NamedColumn>& columns) {
    if (columns.size() != 6 || columns[4].values->GetCount() != kRows) {
        return false;
    }
    double sum = 0.0;
    const auto& levels = columns[4].values->AsTypedArray<unsigned long long>();
    for (unsigned row = 0; row < kRows; ++row) {
        sum += levels.IsSpecial(row) ? 0.0 : std::bit_cast<double>(levels.GetValueUnchecked(row));
    }
    return sum == GetFile().GetLevelSum();
}

// Short strings stand in their handles, so nothing else belongs to the columns.
double BytesOf(const std::vector<NamedColumn>& columns) {
    constexpr double kWidths[] = {32, 8, 4, 8, 8, 1};
    double bytes = 0.0;
    for (std::size_t column = 0; column < columns.size(); ++column) {
        const bool hasKinds = columns[column].values->AsArray().HasSpecialValues();
        bytes += kRows * (kWidths[column] + (hasKinds ? 1.0 : 0.0));
    }
    return bytes;
}

void BM_ReadBytes(benchmark::State& state) {
    std::vector<char> buffer(lumhost::CsvReader::kDefaultBufferBytes);
    for (auto _ : state) {
        const auto source = lumhost::OpenTextSource(GetFile().GetPath());
        while (source->Read(buffer.data(), buffer.size()) == buffer.size()) {
            benchmark::DoNotOptimize(buffer.data());
        }
    }
    SetSpeed(state);
}
BENCHMARK(BM_ReadBytes)->Unit(benchmark::kMillisecond);

void BM_FindFields(benchmark::State& state) {
    for (auto _ : state) {
        const auto source = lumhost::OpenTextSource(GetFile().GetPath());
        lumhost::CsvReader reader(*source);
        lumhost::CsvRows rows;
        while (reader.ReadRows(rows)) {
            benchmark::DoNotOptimize(rows);
        }
    }
    SetSpeed(state);
}
BENCHMARK(BM_FindFields)->Unit(benchmark::kMillisecond);

void BM_Import(benchmark::State& state) {
    if (!IsRight(Import())) {
        return state.SkipWithError("the imported columns differ from what was written");
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(Import());
    }
    SetSpeed(state);
    state.counters["held MB/s"] = kHeldSpeed;
}
BENCHMARK(BM_Import)->Unit(benchmark::kMillisecond);

// In a process of its own, whose peak no other case has raised.
void BM_ImportPeakMemory(benchmark::State& state) {
    GetFile();
    int ends[2];
    if (pipe(ends) != 0) {
        return state.SkipWithError("no pipe");
    }
    for (auto _ : state) {
        const pid_t child = fork();
        if (child == 0) {
            const std::vector<NamedColumn> columns = Import();
            rusage usage{};
            getrusage(RUSAGE_SELF, &usage);
            const double ratio = static_cast<double>(usage.ru_maxrss) * 1024 / BytesOf(columns);
            const bool isWritten = write(ends[1], &ratio, sizeof(ratio)) == sizeof(ratio);
            _exit(isWritten ? 0 : 1);
        }
        int status = 1;
        double ratio = 0.0;
        if (child < 0 || waitpid(child, &status, 0) != child || status != 0 ||
            read(ends[0], &ratio, sizeof(ratio)) != sizeof(ratio)) {
            state.SkipWithError("the import in a process of its own failed");
            break;
        }
        state.counters["peak/columns"] = ratio;
        state.counters["held"] = kHeldPeak;
        if (ratio > kHeldPeak) {
            state.SkipWithError("the import takes more memory than is held");
            break;
        }
    }
    close(ends[0]);
    close(ends[1]);
}
BENCHMARK(BM_ImportPeakMemory)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace

int main(int argumentCount, char** arguments) {
    lum::core::RegisterDefaultCollatorPool();
    benchmark::Initialize(&argumentCount, arguments);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
