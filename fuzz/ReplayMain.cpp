// Runs a fuzz target over the files of its corpus folder, without libFuzzer.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    int inputs = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::printf("%s\n", entry.path().string().c_str());
            std::fflush(stdout); // the last line names the input that failed
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
            const std::vector<std::uint8_t> bytes(content.begin(), content.end());
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
            ++inputs;
        }
    }
    if (inputs == 0)
        std::fprintf(stderr, "there is no corpus: name its folder\n");
    return inputs == 0 ? 1 : 0;
}
