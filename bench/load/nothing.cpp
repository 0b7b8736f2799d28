// The same program without the libraries, but with the standard library that they use.
#include <iostream>

int main() { return std::cout.good() ? 0 : 1; }
