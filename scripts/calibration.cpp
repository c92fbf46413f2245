// The compiler is timed with this file, so that the times of two machines can be compared. Do not change it.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

std::map<std::string, std::vector<std::string>> lines_of(const std::filesystem::path &folder) {
  std::map<std::string, std::vector<std::string>> lines;
  for (const auto &entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream in(entry.path());
    std::ostringstream joined;
    std::vector<std::string> &found = lines[entry.path().filename()];
    for (std::string line; std::getline(in, line);) {
      joined << found.size() << ' ' << line << '\n';
      found.push_back(joined.str());
    }
    std::sort(found.begin(), found.end());
  }
  return lines;
}
