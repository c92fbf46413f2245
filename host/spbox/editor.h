// A text in the user's editor.
#pragma once

#include <filesystem>
#include <string>

namespace spbox {

// A file of the user's own for a text, such as /tmp/spbox-edit.XXXXXX. It is removed with the object, unless it is kept.
class EditedText {
 public:
  // Throws std::system_error.
  explicit EditedText(const std::string &text);
  ~EditedText();
  EditedText(const EditedText &) = delete;
  EditedText &operator=(const EditedText &) = delete;

  // Lets the user edit it with $VISUAL or $EDITOR, or else with `editor` or vi, and returns what they have left. Throws
  // std::runtime_error where no editor can be run or where it ends with another exit status than 0.
  std::string edited() const;

  // The file stays, as the user may want to go on with what they have written.
  const std::filesystem::path &keep();

 private:
  std::filesystem::path path_;
  bool is_kept_ = false;
};

}  // namespace spbox
