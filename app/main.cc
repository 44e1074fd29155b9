#include <unistd.h>

#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "host.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  try {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    return tagwright::runHost(arguments, std::cin, std::cout, std::cerr, nullptr,
                              ::isatty(STDOUT_FILENO) == 1);
  } catch (const std::exception& error) {
    std::cerr << "tagwright: " << error.what() << "\n";
  } catch (...) {
    std::cerr << "tagwright: unexpected failure\n";
  }
  return 1;
}
