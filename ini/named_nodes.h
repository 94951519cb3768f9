#ifndef KORVAN_INI_NAMED_NODES_H_
#define KORVAN_INI_NAMED_NODES_H_

#include <algorithm>
#include <climits>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

#include "ini/trim.h"
#include "ini/twins.h"

/// @file
/// What a document does with its sections and a section with its keys: both
/// are a map from names to objects that the map owns. A map's key and the name
/// field of the object under it are the same text, whatever fails.

namespace korvan::ini {

template <class Nodes>
using NodeOf = std::remove_pointer_t<typename Nodes::mapped_type>;

/// Whether a name belongs between the entry before `place` and the one at it,
/// so that `place` may be given as a hint.
///
/// wcscasecmp subtracts units, so of units of 0x80000000 and more, which UTF-32
/// does not have but a string may, it makes no order: 1 < 0x60000000 <
/// 0xC0000000 < 1, and of two units 0x80000000 apart each comes before the
/// other. A map that is given a hint between such names drops entries, and
/// `emplace` gives itself one. `insert` of an entry does not; a name may then
/// stand twice, and no entry is lost.
template <class Nodes>
bool BelongsAt(const Nodes& nodes, typename Nodes::const_iterator place,
               const typename Nodes::key_type& name) {
  const auto comes_before = [](const auto& left, const auto& right) {
    const int difference = CompareNames(left, right);
    return difference < 0 && difference != INT_MIN;
  };
  return (place == nodes.begin() ||
          comes_before(std::prev(place)->first, name)) &&
         (place == nodes.end() || comes_before(name, place->first));
}

template <class Nodes, class Owner>
NodeOf<Nodes>* FindOrCreate(Nodes& nodes, Owner* owner,
                            typename Nodes::key_type&& name) {
  TrimName(name);
  // Files mostly have their names in order, so the end is tried before the
  // tree is searched.
  auto place = nodes.end();
  bool belongs = BelongsAt(nodes, place, name);
  if (!belongs) {
    place = nodes.lower_bound(name);
    if (place != nodes.end() && !nodes.key_comp()(name, place->first)) {
      return place->second;
    }
    belongs = BelongsAt(nodes, place, name);
  }
  auto made = std::make_unique<NodeOf<Nodes>>(owner, name);
  const auto entry =
      belongs
          ? nodes.emplace_hint(place, std::move(name), made.get())
          : nodes
                .insert(typename Nodes::value_type(std::move(name), made.get()))
                .first;
  // A map whose order broke may come upon the name after all: then it did not
  // take the new object.
  if (entry->second == made.get()) {
    static_cast<void>(made.release());  // the map owns it now
  }
  return entry->second;
}

template <class Nodes>
NodeOf<Nodes>* Find(const Nodes& nodes, typename Nodes::key_type&& name) {
  TrimName(name);
  const auto found = nodes.find(name);
  return found == nodes.end() ? nullptr : found->second;
}

/// Destroys the object under a name, taken as it is. The name may be the
/// object's own.
template <class Nodes>
void Remove(Nodes& nodes, const typename Nodes::key_type& name) {
  if (const auto found = nodes.find(name); found != nodes.end()) {
    const std::unique_ptr<NodeOf<Nodes>> removed(found->second);
    nodes.erase(found);
  }
}

template <class Nodes>
void RemoveAll(Nodes& nodes) {
  for (const auto& entry : nodes) {
    delete entry.second;
  }
  nodes.clear();
}

/// Enters `node` under a new name, and takes it from under its present one.
template <class Nodes>
bool Rename(Nodes& nodes, NodeOf<Nodes>* node, typename Nodes::key_type& name,
            typename Nodes::key_type&& new_name) {
  TrimName(new_name);
  // All that may throw comes before the first change, or changes nothing when
  // it throws.
  typename Nodes::key_type renamed = new_name;
  const auto inserted =
      nodes.insert(typename Nodes::value_type(std::move(new_name), node));
  if (!inserted.second) {
    return false;
  }
  const auto entered = inserted.first;
  auto former = nodes.find(name);
  if (former == nodes.end() || former == entered || former->second != node) {
    // A change of the locale hides entries from a search. Left in the map, the
    // former entry would have the object destroyed twice.
    former = std::find_if(nodes.begin(), nodes.end(), [&](const auto& entry) {
      return entry.second == node && &entry != &*entered;
    });
  }
  if (former != nodes.end()) {
    nodes.erase(former);
  }
  name = std::move(renamed);
  return true;
}

}  // namespace korvan::ini

#endif  // KORVAN_INI_NAMED_NODES_H_
