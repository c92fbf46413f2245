#include "host/box/data_pages.h"

#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace box {
namespace {

// How LMDB lays out a file, in the machine's byte order. A page begins with its number, what it is, and how much of it is used;
// behind that, the first two hold a head.
constexpr std::size_t kPageHead = 16, kNodeHead = 8, kLeastPage = 512, kMostPage = 32768;
constexpr std::uint64_t kNoPage = ~std::uint64_t{0};
constexpr std::size_t kDeepest = 32;  // LMDB goes no deeper
enum PageKind : std::uint16_t { kBranch = 1, kLeaf = 2, kLong = 4, kHead = 8 };
constexpr std::uint16_t kInPagesOfItsOwn = 1;  // of a record in a leaf

struct Tree {
  std::uint32_t pad;
  std::uint16_t flags, depth;
  std::uint64_t branches, leaves, long_pages, entries, root;
};
struct FileHead {
  std::uint32_t magic, version;
  std::uint64_t address, map_size;
  Tree free, records;  // the pages that no record needs, by the save that left them; the records
  std::uint64_t last_page, save;
};
static_assert(sizeof(Tree) == 48 && sizeof(FileHead) == 136);
constexpr std::uint32_t kHeadMagic = 0xBEEFC0DE, kHeadVersion = 1;
constexpr std::uint16_t kKeysAreNumbers = 8;

template <typename T>
T at(FileBytes bytes, std::size_t offset) {
  T value{};
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

[[noreturn]] void heads_are_damaged() {
  throw Damage("it does not begin as it should.");
}

FileHead head_in(FileBytes file, std::size_t number, std::size_t page) {
  if (file.size() < (number + 1) * page) heads_are_damaged();
  const auto head = at<FileHead>(file, number * page + kPageHead);
  const bool is_head =
      at<std::uint64_t>(file, number * page) == number && at<std::uint16_t>(file, number * page + 10) == kHead;
  const bool is_known = head.magic == kHeadMagic && head.version == kHeadVersion && head.address == 0;
  if (!is_head || !is_known || head.free.flags != kKeysAreNumbers || head.records.flags != 0) heads_are_damaged();
  return head;
}

std::string_view text_of(FileBytes bytes) {
  return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

// Goes through the trees of one head, page by page.
class Walk {
 public:
  Walk(FileBytes file, const Heads &heads)
      : file_(file), heads_(heads), head_(at<FileHead>(file, heads.newest)), is_used_(heads.last_page + 1) {}

  Seal go() {
    tree(head_.free, [this](std::string_view key, FileBytes value) { claim_free(key, value); });
    tree(head_.records, [this](std::string_view key, FileBytes value) { add(key, value); });
    // Who notes the number of a save has sealed it.
    const bool is_as_saved = seal_ ? seal_->save == heads_.last_save && seal_->sum == sum_ : !last_save_in(file_);
    if (!is_as_saved) throw Damage("its records are not those that were saved.");
    return {heads_.last_save, sum_};
  }

 private:
  using Visit = std::function<void(std::string_view key, FileBytes value)>;

  // A tree on the way through it.
  struct Way {
    const Tree &tree;
    const Visit &visit;
    bool has_numbers;
    Tree found{};
    std::string_view last{};   // the key that was visited last
    std::string_view least{};  // the next one is not before this
    bool has_last = false, has_least = false;
  };

  struct Page {
    std::uint64_t number;
    FileBytes bytes;
    std::size_t count, upper;
  };
  struct Node {
    std::size_t at, size;
    std::uint16_t low, high, flags;
    std::string_view key;
  };

  [[noreturn]] static void damaged(std::uint64_t page) {
    throw Damage("page " + std::to_string(page) + " is not as it was written.");
  }

  // Each page belongs to one place.
  void claim(std::uint64_t first, std::uint64_t count, std::uint64_t wanted_by) {
    if (first < 2 || first > heads_.last_page || count == 0 || count > heads_.last_page - first + 1) damaged(wanted_by);
    for (std::uint64_t page = first; page < first + count; ++page) {
      if (is_used_[page]) damaged(wanted_by);
      is_used_[page] = true;
    }
  }

  FileBytes bytes_of(std::uint64_t page, std::uint64_t count = 1) const {
    return file_.subspan(page * heads_.page, count * heads_.page);
  }

  static bool before(const Way &way, std::string_view one, std::string_view other) {
    return way.has_numbers ? number_in(one) < number_in(other) : one < other;
  }
  static std::uint64_t number_in(std::string_view key) {
    std::uint64_t number = 0;
    std::memcpy(&number, key.data(), sizeof number);
    return number;
  }

  void tree(const Tree &tree, const Visit &visit) {
    Way way{.tree = tree, .visit = visit, .has_numbers = tree.flags == kKeysAreNumbers};
    const std::uint64_t head = heads_.newest / heads_.page;
    if (tree.depth > kDeepest || (tree.root == kNoPage) != (tree.depth == 0)) damaged(head);
    if (tree.root != kNoPage) descend(way, tree.root, 1, head);
    const Tree &found = way.found;
    const bool all_found = found.branches == tree.branches && found.leaves == tree.leaves &&
                           found.long_pages == tree.long_pages && found.entries == tree.entries;
    if (!all_found) damaged(head);
  }

  void descend(Way &way, std::uint64_t number, std::size_t depth, std::uint64_t from) {
    claim(number, 1, from);
    const bool is_leaf = depth == way.tree.depth;
    const Page page = page_of(number, is_leaf ? kLeaf : kBranch);
    ++(is_leaf ? way.found.leaves : way.found.branches);
    if (page.count < (is_leaf || way.has_numbers ? 1U : 2U)) damaged(number);
    std::size_t used = 0;
    for (std::size_t i = 0; i < page.count; ++i) {
      const Node node = node_of(page, i, is_leaf);
      used += node.size;
      if (is_leaf) {
        visit(way, page, node);
      } else {
        follow(way, page, i, node, depth);
      }
    }
    if (used != page.bytes.size() - page.upper) damaged(number);
  }

  Page page_of(std::uint64_t number, PageKind kind) const {
    const FileBytes bytes = bytes_of(number);
    const std::size_t lower = at<std::uint16_t>(bytes, 12), upper = at<std::uint16_t>(bytes, 14);
    const bool is_sound = at<std::uint64_t>(bytes, 0) == number && at<std::uint16_t>(bytes, 10) == kind &&
                          lower >= kPageHead && lower % 2 == 0 && lower <= upper && upper <= bytes.size();
    if (!is_sound) damaged(number);
    return {number, bytes, (lower - kPageHead) / 2, upper};
  }

  static Node node_of(const Page &page, std::size_t i, bool is_leaf) {
    const std::size_t offset = at<std::uint16_t>(page.bytes, kPageHead + 2 * i), end = page.bytes.size();
    if (offset < page.upper || offset % 2 != 0 || offset + kNodeHead > end) damaged(page.number);
    const FileBytes bytes = page.bytes.subspan(offset);
    const std::size_t key_size = at<std::uint16_t>(bytes, 6);
    Node node{offset,
              kNodeHead + key_size,
              at<std::uint16_t>(bytes, 0),
              at<std::uint16_t>(bytes, 2),
              at<std::uint16_t>(bytes, 4),
              {}};
    if (is_leaf) {
      if (node.flags != 0 && node.flags != kInPagesOfItsOwn) damaged(page.number);
      node.size += node.flags == kInPagesOfItsOwn ? sizeof(std::uint64_t) : value_size(node);
    }
    node.size += node.size % 2;
    if (node.size > bytes.size()) damaged(page.number);
    node.key = text_of(bytes.subspan(kNodeHead, key_size));
    return node;
  }
  static std::size_t value_size(const Node &node) { return node.low | std::size_t{node.high} << 16U; }

  // The keys below a branch are not before the branch's own; the first branch of a page has none.
  void follow(Way &way, const Page &page, std::size_t i, const Node &node, std::size_t depth) {
    if (i > 0) {
      check_key(way, page, node);
      way.least = node.key;
      way.has_least = true;
    }
    const std::uint64_t child = node.low | std::uint64_t{node.high} << 16U | std::uint64_t{node.flags} << 32U;
    descend(way, child, depth + 1, page.number);
  }

  static void check_key(const Way &way, const Page &page, const Node &node) {
    if (way.has_numbers ? node.key.size() != sizeof(std::uint64_t) : node.key.empty()) damaged(page.number);
    if (way.has_last && !before(way, way.last, node.key)) damaged(page.number);
    if (way.has_least && before(way, node.key, way.least)) damaged(page.number);
  }

  void visit(Way &way, const Page &page, const Node &node) {
    check_key(way, page, node);
    way.last = node.key;
    way.has_last = true;
    ++way.found.entries;
    const std::size_t at_value = node.at + kNodeHead + node.key.size();
    const std::size_t size = value_size(node);
    if (node.flags == 0) return way.visit(node.key, page.bytes.subspan(at_value, size));
    const auto first = at<std::uint64_t>(page.bytes, at_value);
    const std::uint64_t needed = (kPageHead + size - 1) / heads_.page + 1;
    claim(first, needed, page.number);
    const FileBytes long_head = bytes_of(first);
    const std::uint64_t count = at<std::uint32_t>(long_head, 12);
    if (at<std::uint64_t>(long_head, 0) != first || at<std::uint16_t>(long_head, 10) != kLong || count < needed)
      damaged(first);
    if (count > needed) claim(first + needed, count - needed, first);
    way.found.long_pages += count;
    way.visit(node.key, bytes_of(first, count).subspan(kPageHead, size));
  }

  // A list of pages: how many, and each, the last page first.
  void claim_free(std::string_view key, FileBytes value) {
    const std::uint64_t list = heads_.newest / heads_.page;
    const std::uint64_t room = value.size() / sizeof(std::uint64_t);
    if (number_in(key) > heads_.last_save || room == 0 || at<std::uint64_t>(value, 0) > room - 1) damaged(list);
    std::uint64_t before = kNoPage;
    for (std::uint64_t i = 1; i <= at<std::uint64_t>(value, 0); ++i) {
      const auto page = at<std::uint64_t>(value, i * sizeof(std::uint64_t));
      if (page >= before) damaged(list);
      claim(page, 1, list);
      before = page;
    }
  }

  void add(std::string_view key, FileBytes value) {
    if (key != kSealKey) {
      sum_ += sum_of(key, value);
    } else if (value.size() == sizeof(Seal)) {
      seal_ = at<Seal>(value, 0);
    } else {
      seal_ = Seal{};
    }
  }

  FileBytes file_;
  Heads heads_;
  FileHead head_;
  std::vector<bool> is_used_;
  std::uint64_t sum_ = 0;
  std::optional<Seal> seal_;
};

}  // namespace

Heads heads_of(FileBytes file) {
  if (file.size() < kLeastPage) heads_are_damaged();
  const std::size_t page = at<FileHead>(file, kPageHead).free.pad;
  const bool is_page = page >= kLeastPage && page <= kMostPage && (page & (page - 1)) == 0;
  if (!is_page) heads_are_damaged();
  const FileHead first = head_in(file, 0, page), second = head_in(file, 1, page);
  const bool is_new = first.save == 0 && second.save == 0;
  const bool take_turns =
      first.save % 2 == 0 && second.save % 2 == 1 && (first.save == second.save + 1 || second.save == first.save + 1);
  if (second.free.pad != page || !(is_new || take_turns)) heads_are_damaged();
  const bool is_second = second.save > first.save;
  const FileHead &newest = is_second ? second : first;
  if (last_save_in(file) > newest.save) throw Damage("what was saved last is lost.");
  return {page, newest.save, newest.last_page, (is_second ? page : 0) + kPageHead};
}

Seal examine(FileBytes file, const Heads &heads) {
  return Walk(file, heads).go();
}

}  // namespace box
