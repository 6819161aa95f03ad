// Feeds arbitrary argument lists to vantle-power's parser: one argument per line of the input.
// With libFuzzer (clang) the fuzzer drives it; otherwise main() replays the corpus and a fixed,
// seeded set of mutations of it, under the same sanitizers as the rest of the tests.
#include "EventDate.h"
#include "Failure.h"
#include "Request.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using namespace vantle::power;

namespace {

[[noreturn]] void fault(const char* what, std::string_view input) {
    std::fprintf(stderr, "fuzz_request: %s for input:\n%.*s\n", what, int(input.size()),
                 input.data());
    std::abort();
}

// An accepted date must be the one canonical text of the date it parsed to.
void checkEvent(const PowerEvent& event, std::string_view word, std::string_view date,
                std::string_view input) {
    if (kindWord(event.kind) != word || formatDate(event.date, argumentLayout) != date) {
        fault("accepted an event it cannot write back", input);
    }
}

void parseOne(std::string_view input) {
    std::vector<std::string_view> args;
    for (std::size_t start = 0; start <= input.size() && args.size() < 3 * maxSteps + 4;) {
        const std::size_t end = std::min(input.find('\n', start), input.size());
        args.push_back(input.substr(start, end - start));
        start = end + 1;
    }
    Request request;
    try {
        request = parseRequest(args);
    } catch (const Failure& failure) {
        if (failure.exitCode() != exitUsage) {
            fault("refused with a status other than usage", input);
        }
        return;
    }
    const std::size_t skip = request.root ? 2 : 0;
    const std::span<const std::string_view> rest(args.begin() + std::ptrdiff_t(skip), args.end());
    switch (request.command) {
    case Command::schedule:
        checkEvent(request.event, rest[1], rest[2], input);
        break;
    case Command::cancel:
        checkEvent(request.event, rest[2], rest[3], input);
        break;
    case Command::apply:
        if (request.steps.size() * 3 + 1 != rest.size()) {
            fault("lost or invented a change", input);
        }
        for (std::size_t i = 0; i < request.steps.size(); ++i) {
            if (request.steps[i].cancel != (rest[3 * i + 1] == "cancel")) {
                fault("mistook a schedule for a cancel", input);
            }
            checkEvent(request.steps[i].event, rest[3 * i + 2], rest[3 * i + 3], input);
        }
        break;
    case Command::help:
    case Command::list:
    case Command::rtcArm:
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    parseOne(std::string_view(reinterpret_cast<const char*>(data), size));
    return 0;
}

#ifndef VANTLE_LIBFUZZER
// Replays every file of the corpus folder, then mutations of them: flipped, dropped, inserted
// and spliced bytes, always from the same seed so a failure repeats.
int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: fuzz_request CORPUS_DIR MUTATIONS\n");
        return 2;
    }
    std::vector<std::string> corpus;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    if (corpus.empty()) {
        std::fprintf(stderr, "fuzz_request: empty corpus in %s\n", argv[1]);
        return 2;
    }
    for (const std::string& input : corpus) {
        parseOne(input);
    }
    const long mutations = std::strtol(argv[2], nullptr, 10);
    std::mt19937 random(20261116);
    const std::string alphabet = "0123456789/: \n'-;$`abcdeghilmnoprstuwy\x7f\xff";
    for (long n = 0; n < mutations; ++n) {
        std::string input = corpus[random() % corpus.size()];
        for (unsigned edits = 1 + random() % 4; edits > 0; --edits) {
            const std::size_t at = input.empty() ? 0 : random() % input.size();
            const char c = alphabet[random() % alphabet.size()];
            switch (random() % 4) {
            case 0:
                if (!input.empty()) {
                    input[at] = c;
                }
                break;
            case 1:
                if (!input.empty()) {
                    input.erase(at, 1);
                }
                break;
            case 2:
                input.insert(at, 1, c);
                break;
            default: {
                const std::string& other = corpus[random() % corpus.size()];
                input =
                    input.substr(0, at) + other.substr(other.empty() ? 0 : random() % other.size());
            }
            }
        }
        parseOne(input);
    }
    std::printf("fuzz_request: %zu corpus inputs and %ld mutations parsed\n", corpus.size(),
                mutations);
    return 0;
}
#endif
