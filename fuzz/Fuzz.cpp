// What libFuzzer calls.
#include "fuzz/Drivers.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int LLVMFuzzerInitialize(int* argc, char*** argv) {
    fuzz::chooseDriver(argc, *argv);
    return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::vector<fuzz::Driver> drivers = fuzz::chosenDrivers();
    for (const fuzz::Driver& driver : drivers) driver.run({data, size});
    return 0;
}
