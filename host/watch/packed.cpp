#include "host/watch/packed.h"

#include <cstring>
#include <stdexcept>

namespace watch {
namespace {

class Packer {
 public:
  void operator()(std::uint32_t number) { bytes_.append(reinterpret_cast<const char *>(&number), sizeof number); }
  void operator()(const std::string &text) {
    (*this)(static_cast<std::uint32_t>(text.size()));
    bytes_ += text;
  }
  void operator()(bool value) { (*this)(std::uint32_t{value}); }
  void operator()(State state, State /*last*/) { (*this)(static_cast<std::uint32_t>(state)); }
  void operator()(Led led, Led /*last*/) { (*this)(static_cast<std::uint32_t>(led)); }
  template <typename Element, typename Fields>
  void list(const std::vector<Element> &elements, Fields fields) {
    (*this)(static_cast<std::uint32_t>(elements.size()));
    for (const Element &element : elements) fields(*this, element);
  }
  std::string bytes() && { return std::move(bytes_); }

 private:
  std::string bytes_;
};

class Unpacker {
 public:
  explicit Unpacker(std::string_view bytes) : bytes_(bytes) {}

  void operator()(std::uint32_t &number) { std::memcpy(&number, take(sizeof number).data(), sizeof number); }
  void operator()(std::string &text) {
    std::uint32_t size = 0;
    (*this)(size);
    text = take(size);
  }
  void operator()(bool &value) {
    std::uint32_t number = 0;
    (*this)(number);
    value = number != 0;
  }
  template <typename Named>
  void operator()(Named &value, Named last) {
    std::uint32_t number = 0;
    (*this)(number);
    if (number > static_cast<std::uint32_t>(last)) refuse();
    value = static_cast<Named>(number);
  }
  template <typename Element, typename Fields>
  void list(std::vector<Element> &elements, Fields fields) {
    std::uint32_t size = 0;
    (*this)(size);
    for (std::uint32_t i = 0; i < size; ++i) fields(*this, elements.emplace_back());
  }

 private:
  [[noreturn]] static void refuse() {
    throw std::runtime_error("what was read of the box makes no sense: the process that read it was led astray.");
  }
  std::string_view take(std::size_t size) {
    if (size > bytes_.size()) refuse();
    const std::string_view taken = bytes_.substr(0, size);
    bytes_.remove_prefix(size);
    return taken;
  }

  std::string_view bytes_;
};

// The fields of a Scene, for both directions.
constexpr auto kLine = [](auto &way, auto &line) { way(line); };

constexpr auto kUnit = [](auto &way, auto &unit) {
  way(unit.name);
  way(unit.carrier);
  way(unit.state, State::kUnreadable);
  way(unit.led, Led::kBlinks);
  way(unit.maintenance);
  way(unit.detached);
  way(unit.link_down);
  way(unit.fan);
  way(unit.note);
};

constexpr auto kPart = [](auto &way, auto &part) {
  way(part.board);
  way(part.part);
  way(part.domain);
  way(part.active);
  way(part.readable);
};

constexpr auto kScene = [](auto &way, auto &scene) {
  way(scene.server.model);
  way(scene.server.in_maintenance_mode);
  way(scene.server.fan_speed);
  way(scene.server.note);
  way.list(scene.server.units, kUnit);
  way.list(scene.server.parts, kPart);
  way.list(scene.server.bent, kLine);
  way.list(scene.server.programs, kLine);
  way.list(scene.trace, kLine);
  way.list(scene.log, kLine);
  way.list(scene.at_work, kLine);
  way(scene.trouble);
};

}  // namespace

std::string packed(const Scene &scene) {
  Packer packer;
  kScene(packer, scene);
  return std::move(packer).bytes();
}

Scene unpacked(std::string_view bytes) {
  Scene scene;
  Unpacker unpacker(bytes);
  kScene(unpacker, scene);
  return scene;
}

}  // namespace watch
