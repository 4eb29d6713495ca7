// The smallest program on the C++ runtime: what starting and ending any program costs.
#include <iostream>

int main() { return std::cout.good() ? 0 : 1; }
