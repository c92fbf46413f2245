// The picture of a scene as lines, for a pipe or a page: as many as it takes.
#pragma once

#include <string>
#include <vector>

#include "host/watch/picture.h"
#include "host/watch/scene.h"

namespace spbox {

watch::Letters letters_of_locale();

// `title` stands in its first line: the folder of the box.
std::vector<std::string> picture_lines(const watch::Scene &scene, const std::string &title);

}  // namespace spbox
