// Feeds a fuzz target without a compiler's help: each file of a corpus as it is, then mutations of them for some seconds.
//
//   fuzz_NAME CORPUS [SECONDS [SEED]]
//
// The input of the moment stands in the file `fuzz-input` of the current folder, also after a crash; passing that file as
// CORPUS runs it alone. With clang's `-fsanitize=fuzzer` a target needs no driver.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostBytes = 20'000;

/// The input of the moment in a mapped file, which outlives any crash.
class InputFile {
public:
    InputFile() {
        const int file = ::open("fuzz-input", O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        if (file < 0 || ::ftruncate(file, kMostBytes) != 0) std::abort();
        void* mapped = ::mmap(nullptr, kMostBytes, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
        if (mapped == MAP_FAILED) std::abort();
        m_bytes = static_cast<char*>(mapped);
        m_file = file;
    }
    void run(const std::string& input) {
        std::memcpy(m_bytes, input.data(), input.size());
        m_length = input.size();
        std::memset(m_bytes + m_length, 0, std::min<std::size_t>(16, kMostBytes - m_length));
        // Its own allocation of exactly that size, so that the sanitizer sees a read past the end.
        const std::vector<std::uint8_t> exact(input.begin(), input.end());
        (void)LLVMFuzzerTestOneInput(exact.data(), exact.size());
    }
    ~InputFile() { ::close(m_file); }

private:
    char* m_bytes = nullptr;
    std::size_t m_length = 0;
    int m_file = -1;
};

std::vector<std::string> readCorpus(const fs::path& path) {
    std::vector<fs::path> files{path};
    if (fs::is_directory(path)) {
        files.assign(fs::directory_iterator(path), fs::directory_iterator());
        std::ranges::sort(files);
    }
    std::vector<std::string> corpus;
    for (const fs::path& file : files) {
        std::ifstream stream(file, std::ios::binary);
        corpus.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
        if (corpus.back().size() > kMostBytes) corpus.back().resize(kMostBytes);
    }
    return corpus;
}

/// Changes inputs in the ways in which real ones go wrong.
class Mutator {
public:
    Mutator(const std::vector<std::string>& corpus, std::uint64_t seed) : m_corpus(corpus), m_random(seed) {}

    std::string next() {
        std::string input = any();
        for (std::size_t changes = 1 + below(6); changes > 0; --changes) change(input);
        if (input.size() > kMostBytes) input.resize(kMostBytes);
        return input;
    }

private:
    std::size_t below(std::size_t limit) { return limit == 0 ? 0 : m_random() % limit; }
    const std::string& any() { return m_corpus[below(m_corpus.size())]; }

    void change(std::string& input) {
        static constexpr std::string_view kPieces[] = {"\"",
                                                       "\\",
                                                       "{",
                                                       "}",
                                                       "[",
                                                       "]",
                                                       ",",
                                                       ":",
                                                       "\n",
                                                       "\r",
                                                       " ",
                                                       "null",
                                                       "0",
                                                       "-",
                                                       "1e999",
                                                       ".0",
                                                       "-0",
                                                       "1e15",
                                                       "\\u0000",
                                                       "\\ud800",
                                                       "\xff",
                                                       "\xc3",
                                                       "\"id\":",
                                                       "\"method\":",
                                                       "\"params\":",
                                                       "\"name\":",
                                                       "\"arguments\":",
                                                       "9223372036854775808",
                                                       "true",
                                                       "\xef\xbb\xbf",
                                                       std::string_view("\0", 1),
                                                       "[[[[[[[[[[[[[[[["};
        const std::size_t at = below(input.size() + 1);
        const std::size_t length = below(std::min<std::size_t>(input.size() - at, 64) + 1);
        switch (below(7)) {
        case 0: input.insert(at, kPieces[below(std::size(kPieces))]); break;
        case 1: input.erase(at, length); break;
        case 2: input.insert(at, input.substr(at, length)); break;
        case 3: input.replace(at, length, kPieces[below(std::size(kPieces))]); break;
        case 4:
            if (at < input.size()) input[at] = static_cast<char>(input[at] ^ (1 << below(8)));
            break;
        case 5:
            if (at < input.size()) input[at] = static_cast<char>(below(256));
            break;
        default: {
            const std::string& other = any();
            input.replace(at, length, other.substr(below(other.size() + 1), below(256)));
        }
        }
    }

    const std::vector<std::string>& m_corpus;
    std::mt19937_64 m_random;
};

} // namespace

int main(int count, char** arguments) {
    if (count < 2) {
        std::fprintf(stderr, "usage: %s CORPUS [SECONDS [SEED]]\n", arguments[0]);
        return 2;
    }
    const std::vector<std::string> corpus = readCorpus(arguments[1]);
    if (corpus.empty()) {
        std::fprintf(stderr, "%s holds nothing\n", arguments[1]);
        return 2;
    }
    const double seconds = count > 2 ? std::atof(arguments[2]) : 0;
    const std::uint64_t seed = count > 3 ? std::strtoull(arguments[3], nullptr, 10) : std::random_device{}();

    InputFile file;
    for (const std::string& each : corpus) file.run(each);
    Mutator mutator(corpus, seed);
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    std::size_t runs = corpus.size();
    for (; std::chrono::steady_clock::now() < end; ++runs) file.run(mutator.next());
    std::printf("%zu inputs, seed %llu\n", runs, static_cast<unsigned long long>(seed));
}
