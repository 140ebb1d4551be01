// How long a benchmark takes: as many rounds as its first argument says.
#pragma once

#include <cstdlib>

inline int RoundsOf(int argc, char** argv, int usual)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : usual;
    return rounds > 0 ? rounds : usual;
}
