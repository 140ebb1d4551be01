#include <cstdio>

int main()
{
    std::puts("Kelvo " KELVO_VERSION);
    return 0;
}
