#include "host/base/xml.h"

#include <algorithm>

#include "host/base/shown.h"

namespace base {

std::string xml(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto size = character_size(text);
    const char c = text[0];
    if (c == '\n')
      result += c;
    else if (size == 0 || text.starts_with("\xef\xbf\xbe") || text.starts_with("\xef\xbf\xbf"))
      result += '?';
    else if (c == '&')
      result += "&amp;";
    else if (c == '<')
      result += "&lt;";
    else if (c == '>')
      result += "&gt;";
    else if (c == '"')
      result += "&quot;";
    else
      result += text.substr(0, size);
    text.remove_prefix(std::max<std::size_t>(size, 1));
  }
  return result;
}

}  // namespace base
