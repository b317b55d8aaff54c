// Sorts a block of 100 000 declarations with SortDeclarations, and reads a 100 MB file line by
// line with TStringReader; beside each, the same work done by GNU "sort -f" and "wc -l" on the
// same data, timed from here so that the figures come from the same run.
//
// The data goes to $TMPDIR (or /tmp) and is removed at the end.
#include "foundation/AppUtils.h"
#include "foundation/Classes.h"
#include "foundation/StrsUtils.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <unistd.h>

using namespace zelvane;

namespace {

constexpr int kDeclarations = 100000;
constexpr int64_t kFileBytes = 100LL * 1024 * 1024;

std::string DataPath(const char* name) {
    return CreateTempPath() + "zelv_bench_" + std::to_string(getpid()) + "_" + name;
}

// Declarations as a class section holds them, with random names.
const std::vector<std::string>& Declarations() {
    static const std::vector<std::string> lines = [] {
        std::mt19937 rng(12345);
        const char* kinds[] = {"    procedure ", "    function ", "    property ",
                               "    constructor ", "    destructor "};
        std::vector<std::string> v;
        v.reserve(kDeclarations);
        for (int i = 0; i < kDeclarations; ++i) {
            std::string name;
            int len = 6 + static_cast<int>(rng() % 14);
            for (int k = 0; k < len; ++k) {
                int r = static_cast<int>(rng() % 52);
                name += static_cast<char>(r < 26 ? 'A' + r : 'a' + r - 26);
            }
            int kind = static_cast<int>(rng() % 5);
            std::string tail = kind == 1   ? "(const S: string; Index: Integer): Boolean;"
                               : kind == 2 ? ": Integer read Get" + name + ";"
                                           : "(Sender: TObject);";
            v.push_back(kinds[kind] + name + tail);
        }
        return v;
    }();
    return lines;
}

const std::string& DeclarationFile() {
    static const std::string name = [] {
        std::string n = DataPath("decls.txt");
        std::ofstream f(n, std::ios::binary);
        for (const auto& s : Declarations())
            f << s << '\n';
        return n;
    }();
    return name;
}

// About 100 MB of lines of 20 to 100 bytes, ended by CR LF.
const std::string& BigFile() {
    static const std::string name = [] {
        std::string n = DataPath("big.txt");
        std::ofstream f(n, std::ios::binary);
        std::mt19937 rng(777);
        std::string line;
        int64_t written = 0;
        while (written < kFileBytes) {
            line.assign(20 + rng() % 81, 'a' + static_cast<char>(rng() % 26));
            line += "\r\n";
            f << line;
            written += static_cast<int64_t>(line.size());
        }
        return n;
    }();
    return name;
}

// Runs a shell command and gives its wall time in seconds.
double TimeCommand(const std::string& command) {
    auto start = std::chrono::steady_clock::now();
    int rc = std::system(command.c_str());
    auto end = std::chrono::steady_clock::now();
    if (rc != 0) throw std::runtime_error("command failed: " + command);
    return std::chrono::duration<double>(end - start).count();
}

void BM_SortDeclarations(benchmark::State& state) {
    rtl::TStringList lines;
    for (auto _ : state) {
        state.PauseTiming();
        lines.Clear();
        for (const auto& s : Declarations())
            lines.Add(s);
        state.ResumeTiming();
        int errorLine = 0;
        if (!SortDeclarations(&lines, errorLine)) state.SkipWithError("sort failed");
    }
    state.SetItemsProcessed(state.iterations() * kDeclarations);
}
BENCHMARK(BM_SortDeclarations)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_GnuSortF(benchmark::State& state) {
    const std::string cmd = "sort -f '" + DeclarationFile() + "' > /dev/null";
    for (auto _ : state)
        state.SetIterationTime(TimeCommand(cmd));
    state.SetItemsProcessed(state.iterations() * kDeclarations);
}
BENCHMARK(BM_GnuSortF)->Unit(benchmark::kMillisecond)->UseManualTime();

void BM_StringReaderMappedFile(benchmark::State& state) {
    const std::string& name = BigFile();
    int64_t lines = 0;
    for (auto _ : state) {
        TStringReader reader(name);
        std::string s;
        lines = 0;
        while (reader.ReadString(s))
            ++lines;
    }
    state.counters["lines"] = static_cast<double>(lines);
    state.SetBytesProcessed(state.iterations() * GetFileSizeEx(name));
}
BENCHMARK(BM_StringReaderMappedFile)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_StringReaderBufferedStream(benchmark::State& state) {
    const std::string& name = BigFile();
    TMappedFileStream file(name, true, 0, true);
    int64_t lines = 0;
    for (auto _ : state) {
        file.SetPosition(0);
        TStringReader reader(&file);
        std::string s;
        lines = 0;
        while (reader.ReadString(s))
            ++lines;
    }
    state.counters["lines"] = static_cast<double>(lines);
    state.SetBytesProcessed(state.iterations() * GetFileSizeEx(name));
}
BENCHMARK(BM_StringReaderBufferedStream)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_WcL(benchmark::State& state) {
    const std::string cmd = "wc -l < '" + BigFile() + "' > /dev/null";
    for (auto _ : state)
        state.SetIterationTime(TimeCommand(cmd));
    state.SetBytesProcessed(state.iterations() * GetFileSizeEx(BigFile()));
}
BENCHMARK(BM_WcL)->Unit(benchmark::kMillisecond)->UseManualTime();

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    // The data is made before any timing starts.
    DeclarationFile();
    BigFile();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    std::remove(DeclarationFile().c_str());
    std::remove(BigFile().c_str());
    return 0;
}
