// What a program calls the system for before its main, whose only library is
// that of C++: with this the loading of korvan is compared.
#include <unistd.h>

int main() { return write(-1, "main", 4) == -1 ? 0 : 1; }
