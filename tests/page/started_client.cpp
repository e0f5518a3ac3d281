// A game client for the tests with the Windows program: writes its argument into the file "started" in its working
// directory.

#include <fstream>

int main(int argc, char** argv) { std::ofstream("started", std::ios::binary) << (argc > 1 ? argv[1] : "") << '\n'; }
