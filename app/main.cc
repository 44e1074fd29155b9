#include <iostream>
#include <string>
#include <vector>

#include "host.h"

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  std::vector<std::string> arguments(argv + 1, argv + argc);
  return tagwright::runHost(arguments, std::cin, std::cout, std::cerr);
}
