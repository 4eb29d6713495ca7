// The main() of every program; the build defines PROGRAM as the one to run.
#include "programs/common/program.h"

int main(int argc, char **argv) {
  using namespace klib::programs;
  return run_program(PROGRAM, argc, argv);
}
