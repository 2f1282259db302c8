/// Files of every format, made at random from their features, encoded, and damaged.
#pragma once

#include <stdint.h>

#include <string>
#include <vector>

namespace reference {

class Random {
public:
    explicit Random(uint64_t seed) : mState(seed * 0x9E3779B97F4A7C15 + 0x2545F4914F6CDD1D) {}

    uint32_t next() {
        mState += 0x9E3779B97F4A7C15;
        uint64_t z = mState;
        z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9;
        z = (z ^ z >> 27) * 0x94D049BB133111EB;
        return static_cast<uint32_t>(z >> 32);
    }
    uint32_t below(size_t n) { return n == 0 ? 0 : static_cast<uint32_t>(next() % n); }
    bool percent(unsigned p) { return below(100) < p; }

    template <class T>
    const T& of(const std::vector<T>& all) {
        return all[below(all.size())];
    }

private:
    uint64_t mState;
};

std::string makeSrt(Random& random);
std::string makeSsa(Random& random);
std::string makeSmi(Random& random);
std::string makeTxt(Random& random);
std::string makeSubViewer20(Random& random);
std::string makeSubViewer10(Random& random);
std::string makeMicroDvd(Random& random);
std::string makeDvb(Random& random);
std::string makeSub(Random& random);  ///< of any dialect
std::string makeIndex(Random& random);
std::string makeUnit(Random& random);

}  // namespace reference
