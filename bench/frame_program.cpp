// The same, run through the library's main loop with an empty command line.
#include <iostream>

#include "klib.h"

static void process(char *) {}

int main(int argc, char **argv) {
  Kmain_loop(argc, argv, "frame", "", 1, reinterpret_cast<K_process_function>(process), nullptr,
             nullptr);
  return std::cout.good() ? 0 : 1;
}
