/// What the interposers know of each other.
#pragma once

/// How many `OwnMemory` are around what this thread does. A new thread begins with one: what its start allocates is not
/// the library's.
extern __thread int testOwnMemory;

namespace test {

/// The error with which the next call of this name has to fail, 0 when it succeeds; counts it.
int refusal(const char* name);

}  // namespace test
