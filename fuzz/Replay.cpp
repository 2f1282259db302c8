// Runs a target on files and on every file of folders: corpora and findings as ordinary tests, with any compiler.
#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "fuzz/Drivers.h"

namespace {

namespace fs = std::filesystem;

constexpr android::U32 kMutations = 16;

bool collect(const char* argument, std::vector<fs::path>* inputs) {
    std::error_code error;
    if (fs::is_regular_file(argument, error)) {
        inputs->emplace_back(argument);
        return true;
    }
    const auto before = static_cast<std::ptrdiff_t>(inputs->size());
    for (const fs::directory_entry& entry : fs::directory_iterator(argument, error)) {
        if (entry.is_regular_file() && entry.path().filename().c_str()[0] != '.') inputs->push_back(entry.path());
    }
    std::sort(inputs->begin() + before, inputs->end());
    return static_cast<std::ptrdiff_t>(inputs->size()) > before;
}

}  // namespace

int main(int argc, char** argv) {
    fuzz::askEverything = true;
    fuzz::chooseDriver(&argc, argv);
    if (argc < 2) {
        fprintf(stderr, "usage: %s [--driver=NAME] FILE|FOLDER...\n", argv[0]);
        return 2;
    }
    std::vector<fs::path> inputs;
    for (int i = 1; i < argc; ++i) {
        if (!collect(argv[i], &inputs)) {
            fprintf(stderr, "%s: no input in %s\n", argv[0], argv[i]);
            return 2;
        }
    }
    for (const fuzz::Driver& driver : fuzz::chosenDrivers()) {
        for (const fs::path& input : inputs) {
            printf("%s %s\n", driver.name, input.c_str());
            fflush(stdout);  // the last name is the one that failed
            std::ifstream file(input, std::ios::binary);
            const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
            const std::vector<android::U8> exact(bytes.begin(), bytes.end());
            driver.run({exact.data(), exact.size()});
            if (driver.mutate == nullptr) continue;
            for (android::U32 seed = 0; seed < kMutations; ++seed) {  // they stay in bounds, whatever they get
                std::vector<android::U8> changed = exact;
                driver.mutate(changed, seed);
            }
        }
    }
    return 0;
}
