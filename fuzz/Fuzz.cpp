// What libFuzzer calls.
#include <string.h>

#include <algorithm>

#include "fuzz/Drivers.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed);

int LLVMFuzzerInitialize(int* argc, char*** argv) {
    fuzz::chooseDriver(argc, *argv);
    return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<fuzz::Driver> drivers = fuzz::chosenDrivers();
    for (const fuzz::Driver& driver : drivers) driver.run({data, size});
    return 0;
}

/// Every other change is one of the target's own; sometimes a blind one comes on top.
size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed) {
    static fuzz::Mutate* const mutate = fuzz::chosenDrivers().front().mutate;
    if (mutate == nullptr || seed % 2 == 0) return LLVMFuzzerMutate(data, size, maxSize);
    std::vector<uint8_t> input(data, data + size);
    mutate(input, seed / 2);
    size = std::min(input.size(), maxSize);
    if (size != 0) memcpy(data, input.data(), size);
    return seed % 16 == 1 ? LLVMFuzzerMutate(data, size, maxSize) : size;
}
