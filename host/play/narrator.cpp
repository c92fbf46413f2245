#include "host/play/narrator.h"

#include "host/base/shown.h"
#include "host/play/layout.h"

namespace play {

void Narrator::happens(const std::string &sentence) {
  remarks(sentence);
  picture_.note(base::shown(sentence));
}

void Narrator::remarks(const std::string &sentence) {
  transcript_.print(sentence + "\n\n");
  if (chronicle_ != nullptr) chronicle_->does(sentence, "");
}

void Narrator::happens(const std::string &sentence, const std::string &output) {
  remarks(sentence, output);
  picture_.note(base::shown(sentence));
}

void Narrator::remarks(const std::string &sentence, const std::string &output) {
  transcript_.print(base::shown(sentence) + "\n" + indented(output) + "\n");
  if (chronicle_ != nullptr) chronicle_->does(sentence, output);
}

void Narrator::shows(const std::string &caption, const std::vector<std::string> &rows, terminal::Size size,
                     const std::vector<std::string> &server) {
  const std::string line = base::shown(caption);
  transcript_.print(framed(rows, line) + "\n");
  picture_.add(line, rows, size, server);
  if (chronicle_ != nullptr) chronicle_->shows(caption);
}

}  // namespace play
