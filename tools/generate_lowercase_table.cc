// Writes the simple lower-case mapping of UnicodeData.txt as a C++ table of
// {code point, lower-case code point} pairs, sorted by code point, for every
// character whose lower case differs from itself.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::vector<std::string> splitFields(const std::string& line) {
  std::vector<std::string> fields;
  std::string field;
  std::istringstream in(line);
  while (std::getline(in, field, ';')) fields.push_back(field);
  if (!line.empty() && line.back() == ';') fields.emplace_back();
  return fields;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: generate_lowercase_table UnicodeData.txt OUTPUT\n";
    return 2;
  }
  std::ifstream data(argv[1]);
  if (!data) {
    std::cerr << "cannot read " << argv[1] << " (install Debian's unicode-data)\n";
    return 1;
  }
  std::ofstream out(argv[2]);
  out << "// Generated from " << argv[1] << " by generate_lowercase_table. Do not edit.\n";
  std::string line;
  int pairs = 0;
  while (std::getline(data, line)) {
    std::vector<std::string> fields = splitFields(line);
    if (fields.size() < 14 || fields[13].empty()) continue;
    unsigned long code = std::strtoul(fields[0].c_str(), nullptr, 16);
    unsigned long lower = std::strtoul(fields[13].c_str(), nullptr, 16);
    if (code == lower) continue;
    char row[64];
    std::snprintf(row, sizeof row, "{0x%05lX, 0x%05lX},\n", code, lower);
    out << row;
    ++pairs;
  }
  if (pairs < 1000) {
    std::cerr << argv[1] << " holds too few lower-case mappings: " << pairs << "\n";
    return 1;
  }
  return out ? 0 : 1;
}
