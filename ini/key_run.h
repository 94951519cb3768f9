// Enters many key lines of one section at once, when their names come in no
// order. One by one, each would cost a search that misses the processor's
// caches. Sorted first, they become keys that lie in memory in that order, too.
// Only the building can fail, so that a run is entered whole or not at all. If
// it is not, its lines are entered one by one, with the same result.
#ifndef KORVAN_INI_KEY_RUN_H_
#define KORVAN_INI_KEY_RUN_H_

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ini/line.h"
#include "ini/named_nodes.h"
#include "ini/trim.h"
#include "ini/twins.h"

namespace korvan::ini {

template <class Section>
class KeyRun {
 public:
  using Keys = typename Section::Keys;
  using String = typename Keys::key_type;
  using Char = typename String::value_type;
  using View = std::basic_string_view<Char>;

  // The run's keys go to `section`, whose map is `keys`. `fold` is one of the
  // current locale.
  KeyRun(Section& section, Keys& keys, const Folding<Char>& fold)
      : section_(section), keys_(keys), fold_(fold) {}

  // Gathers the key lines at the beginning of `text`: up to the first header,
  // to the first name that only a line by itself can enter, or to as many as a
  // run may have. The text must stay valid.
  void Gather(View text, Char line_feed) {
    size_ = 0;
    lines_.clear();
    const std::size_t most_lines = MostLines(text);
    for (std::size_t end = text.find(line_feed); end != View::npos;
         end = text.find(line_feed, size_)) {
      const Line<Char> line = ParseLine(text.substr(size_, end - size_));
      MakeRoom(lines_, most_lines);
      if (line.kind == LineKind::kHeader || lines_.size() == most_lines ||
          (line.kind == LineKind::kKey && !Add(line))) {
        break;
      }
      size_ = end + 1;
    }
  }

  // The characters that the gathered lines take of the text.
  std::size_t size() const { return size_; }

  // Enters all of the lines or, with false, none of them.
  bool Enter() {
    // For a few lines the work is not worth it.
    if (lines_.size() < 16 || !IsInOrder()) {
      return false;
    }
    Sort();
    if (!Build()) {
      return false;
    }
    Commit();
    return true;
  }

 private:
  using Key = NodeOf<Keys>;

  // How many lines before it is entered the text of a line is fetched.
  static constexpr std::ptrdiff_t kPrefetchedLines = 8;

  // A key line. Its texts lie in the stream's buffer.
  struct KeyLine {
    std::uint64_t order;  // of the names, as far as its bits go
    const Char* name;
    const Char* value;
    std::uint32_t name_size;
    std::uint32_t value_size;

    View Name() const { return {name, name_size}; }
    View Value() const { return {value, value_size}; }
  };

  // New keys, which nobody owns yet.
  struct NewKeys {
    NewKeys() = default;
    NewKeys(const NewKeys&) = delete;
    NewKeys& operator=(const NewKeys&) = delete;
    ~NewKeys() { RemoveAll(map); }

    Keys map;
  };

  // A new value for a key that is there.
  struct NewValue {
    Key* key;
    String value;
  };

  // Limits the memory that a run takes: a text of the shortest lines must not
  // ask for a block many times as large as it is.
  static std::size_t MostLines(View text) {
    constexpr std::size_t kMost = std::size_t{1} << 20;
    constexpr std::size_t kSmall = std::size_t{64} << 10;
    const std::size_t bytes = kSmall + 4 * text.size() * sizeof(Char);
    return std::min(kMost, bytes / std::max(sizeof(KeyLine), sizeof(NewValue)));
  }

  // Makes room for one more, and for no more than `most` at all.
  template <class Vector>
  static void MakeRoom(Vector& vector, std::size_t most) {
    if (vector.size() == vector.capacity()) {
      vector.reserve(std::clamp<std::size_t>(2 * vector.size(), 16, most));
    }
  }

  bool Add(const Line<Char>& line) {
    const View name = WithoutTrailing(IsBlank<Char>,
                                      WithoutLeading(IsBlank<Char>, line.name));
    const auto size = static_cast<std::size_t>(line.value.data() +
                                               line.value.size() - name.data());
    if (!IsOrdered(name) || size > UINT32_MAX) {
      return false;
    }
    if (lines_.empty()) {
      shared_ = name;
    }
    if (!name.starts_with(shared_)) {
      shared_ = View(shared_.begin(), std::ranges::mismatch(shared_, name).in1);
    }
    lines_.push_back({0, name.data(), line.value.data(),
                      static_cast<std::uint32_t>(name.size()),
                      static_cast<std::uint32_t>(line.value.size())});
    return true;
  }

  // Whether the section's names are in order. They are not if the locale has
  // changed since they were entered. To look at all of them must not take much
  // longer than to read the run, so this gives up where they are many or long.
  bool IsInOrder() const {
    std::size_t characters_left = 16 * size_;
    const String* previous = nullptr;
    for (const auto& [name, key] : keys_) {
      if (name.size() >= characters_left || !IsOrdered(View(name)) ||
          (previous != nullptr && CompareNames(*previous, name) >= 0)) {
        return false;
      }
      characters_left -= name.size() + 1;
      previous = &name;
    }
    return true;
  }

  // The name without the beginning that all share.
  View Rest(const KeyLine& line) const {
    return line.Name().substr(shared_.size());
  }

  // Sorts by name, and lines of one name by their place in the text. The first
  // characters of the names, as many as 64 bits hold, decide most comparisons.
  void Sort() {
    constexpr std::size_t kMost = 9;  // of 7 bits, as ASCII has
    std::uint64_t used = 1;
    for (const KeyLine& line : lines_) {
      for (const Char character : Rest(line).substr(0, kMost)) {
        used |= fold_(character);
      }
    }
    const auto width = static_cast<int>(std::bit_width(used));
    const std::size_t count =
        std::min(kMost, 64 / static_cast<std::size_t>(width));
    for (KeyLine& line : lines_) {
      const View rest = Rest(line);
      for (std::size_t i = 0; i < count; ++i) {
        line.order <<= width;
        line.order |= i < rest.size() ? fold_(rest[i]) : 0;
      }
    }
    std::ranges::sort(
        lines_, [this](const KeyLine& left, const KeyLine& right) {
          const int difference = Compare(left, right);
          return difference != 0 ? difference < 0 : left.name < right.name;
        });
  }

  int Compare(const KeyLine& left, const KeyLine& right) const {
    return left.order != right.order ? (left.order < right.order ? -1 : 1)
                                     : CompareNames(Rest(left), Rest(right));
  }

  // Makes new keys, and values for those that are there. Returns false if the
  // names are not in the order of the map after all.
  bool Build() {
    auto place = keys_.begin();
    auto changed = keys_.end();
    for (auto line = lines_.begin(); line != lines_.end(); ++line) {
      // The text of a large run is in no cache. It comes in while the lines
      // before are entered.
      if (lines_.end() - line > kPrefetchedLines) {
        __builtin_prefetch(line[kPrefetchedLines].name);
      }
      String name(line->Name());
      // The first line of a name spells it, the last one gives its value.
      while (std::next(line) != lines_.end() &&
             Compare(*line, *std::next(line)) == 0) {
        ++line;
      }
      // At the end all keys that are there come before this name.
      if (place != keys_.end()) {
        const auto [first, is_there] = FirstNotBefore(place, name);
        place = first;
        if (place != keys_.end() && place == changed) {
          return false;
        }
        if (is_there) {
          MakeRoom(new_values_, lines_.size());
          new_values_.push_back({place->second, String(line->Value())});
          changed = place;
          continue;
        }
      }
      auto key = std::make_unique<Key>(&section_, name);
      key->SetValue(String(line->Value()));
      if (!Append(std::move(name), std::move(key))) {
        return false;
      }
    }
    return true;
  }

  // Enters a new key after all others. Returns false if it does not belong
  // there.
  bool Append(String&& name, std::unique_ptr<Key> key) {
    Keys& keys = new_keys_.map;
    Key* const last = key.get();
    if (keys.emplace_hint(keys.end(), std::move(name), last)->second == last) {
      static_cast<void>(key.release());  // the map owns it now
    }
    return keys.rbegin()->second == last;
  }

  // The first key from `place` on whose name is not before `name`, and whether
  // that is its name. Most names of a large run are few steps apart.
  std::pair<typename Keys::iterator, bool> FirstNotBefore(
      typename Keys::iterator place, const String& name) {
    for (int step = 0; step < 8 && place != keys_.end(); ++step, ++place) {
      const int difference = CompareNames(place->first, name);
      if (difference >= 0) {
        return {place, difference == 0};
      }
    }
    place = keys_.lower_bound(name);
    return {place,
            place != keys_.end() && CompareNames(place->first, name) == 0};
  }

  // Nothing here allocates or throws.
  void Commit() noexcept {
    for (NewValue& changed : new_values_) {
      changed.key->SetValue(std::move(changed.value));
    }
    // Each entry that moves costs a search.
    if (keys_.size() < new_keys_.map.size()) {
      keys_.swap(new_keys_.map);
    }
    keys_.merge(new_keys_.map);
  }

  Section& section_;
  Keys& keys_;
  const Folding<Char>& fold_;
  std::size_t size_ = 0;
  View shared_;  // the beginning that all names share
  std::vector<KeyLine> lines_;
  NewKeys new_keys_;
  std::vector<NewValue> new_values_;
};

}  // namespace korvan::ini

#endif  // KORVAN_INI_KEY_RUN_H_
