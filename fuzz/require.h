// What must hold for every input; a fuzzer stops at the first one for which it does not.
#pragma once

#include <cstdlib>

inline void require(bool holds)
{
    if (!holds)
        std::abort();
}
