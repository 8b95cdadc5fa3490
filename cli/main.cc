#include <iostream>
#include <string>
#include <vector>

#include "cli/app.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  return kwx::cli::Run(args, std::cin, std::cout, std::cerr);
}
