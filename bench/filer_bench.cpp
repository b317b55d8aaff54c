// Throughput of ObjectBinaryToText and ObjectTextToBinary on a large generated form stream.
//
//   filer_bench --generate DIR   writes DIR/form.txt and DIR/form.bin, the input that
//                                scripts/bench.sh also gives Free Pascal's converter
//   filer_bench [benchmark options]
#include "rtl/ObjectText.h"
#include "rtl/Streams.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

using namespace rtl;

namespace {

// Appends the pieces to text (one append each: GCC 12 warns wrongly about chains of "+").
void Add(std::string& text, std::initializer_list<std::string_view> pieces) {
    for (std::string_view p : pieces) text.append(p);
}

// A form of several megabytes with the value forms a real form holds: many controls with
// integers, identifiers, sets, strings (some long, some with control characters), string
// lists, collections, floats, binary data and nested children.
std::string GenerateText(int controls) {
    std::string t = "object MainForm: TMainForm\r\n  Left = 192\r\n  Top = 107\r\n"
                    "  Caption = 'Generated form'\r\n";
    std::string blob;
    for (int i = 0; i < 256; ++i) {
        static const char hex[] = "0123456789ABCDEF";
        blob += hex[(i * 7) >> 4 & 15];
        blob += hex[(i * 7) & 15];
    }
    for (int i = 0; i < controls; ++i) {
        std::string n = std::to_string(i);
        bool panel = i % 10 == 0;
        Add(t, {"  object Control", n, ": ", panel ? "TPanel" : "TLabel", "\r\n"});
        Add(t, {"    Left = ", std::to_string(i % 700), "\r\n"});
        Add(t, {"    Top = ", std::to_string((i * 13) % 40000 - 200), "\r\n"});
        Add(t, {"    Width = ", std::to_string(100000 + i), "\r\n"});
        Add(t, {"    Caption = 'Control number ", n, " isn''t empty'\r\n"});
        Add(t, {"    Hint = 'First line'#13#10'Second line'\r\n",
                "    Font.Style = [fsBold, fsUnderline]\r\n",
                "    Align = alTop\r\n    Visible = False\r\n"});
        Add(t, {"    Ratio = ", std::to_string(i % 1000), ".25\r\n"});
        Add(t, {"    Lines.Strings = (\r\n      'one'\r\n      'two ", n, "'\r\n      '')\r\n"});
        Add(t, {"    Columns = <\r\n      item\r\n        Caption = 'Name'\r\n",
                "        Width = 80\r\n      end\r\n      item\r\n",
                "        Caption = 'Size'\r\n      end>\r\n"});
        if (i % 50 == 0) {
            Add(t, {"    Description = \r\n      '", std::string(64, 'd'), "' +\r\n      '",
                    std::string(64, 'e'), "' +\r\n      'tail ", n, "'\r\n"});
            Add(t, {"    Picture.Data = {"});
            for (int l = 0; l < 8; ++l)
                Add(t, {"\r\n      ", std::string_view(blob).substr(l * 64, 64)});
            Add(t, {"}\r\n"});
        }
        if (panel)
            Add(t, {"    object Inner", n, ": TButton\r\n      Caption = 'OK'\r\n",
                    "      Default = True\r\n    end\r\n"});
        Add(t, {"  end\r\n"});
    }
    t += "end\r\n";
    return t;
}

std::string ToBinary(const std::string& text) {
    TStringStream in(text), out;
    ObjectTextToBinary(&in, &out);
    return out.DataString();
}

const std::string& Text() {
    static const std::string text = GenerateText(20000);
    return text;
}

const std::string& Binary() {
    static const std::string binary = ToBinary(Text());
    return binary;
}

void BM_BinaryToText(benchmark::State& state) {
    const std::string& input = Binary();
    for (auto _ : state) {
        TStringStream in(input);
        TMemoryStream out;
        ObjectBinaryToText(&in, &out);
        benchmark::DoNotOptimize(out.Memory());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(input.size()));
}
BENCHMARK(BM_BinaryToText)->Unit(benchmark::kMillisecond);

void BM_TextToBinary(benchmark::State& state) {
    const std::string& input = Text();
    for (auto _ : state) {
        TStringStream in(input);
        TMemoryStream out;
        ObjectTextToBinary(&in, &out);
        benchmark::DoNotOptimize(out.Memory());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(input.size()));
}
BENCHMARK(BM_TextToBinary)->Unit(benchmark::kMillisecond);

bool WriteFile(const std::string& path, const std::string& data) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f) return false;
    bool ok = std::fwrite(data.data(), 1, data.size(), f) == data.size();
    return std::fclose(f) == 0 && ok;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--generate") == 0) {
        std::string dir = argv[2];
        if (!WriteFile(dir + "/form.txt", Text()) || !WriteFile(dir + "/form.bin", Binary())) {
            std::fprintf(stderr, "filer_bench: cannot write into %s\n", dir.c_str());
            return 1;
        }
        std::printf("form.txt: %zu bytes, form.bin: %zu bytes\n", Text().size(),
                    Binary().size());
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
