#ifndef KORVAN_INI_NAMED_NODES_H_
#define KORVAN_INI_NAMED_NODES_H_

#include <korvan/text.h>

#include <algorithm>
#include <memory>
#include <type_traits>
#include <utility>

/// @file
/// What a document does with its sections and a section with its keys: both
/// are a map from names to objects that the map owns. A map's key and the name
/// field of the object under it are the same text, whatever fails.

namespace korvan::ini {

template <class Nodes>
using NodeOf = std::remove_pointer_t<typename Nodes::mapped_type>;

/// Names lose these at both ends, and nothing else.
template <class String>
void TrimName(String& name) {
  static constexpr typename String::value_type kBlanks[] = {' ', '\t', '\0'};
  Trim(name, kBlanks);
}

template <class Nodes, class Owner>
NodeOf<Nodes>* FindOrCreate(Nodes& nodes, Owner* owner,
                            typename Nodes::key_type name) {
  TrimName(name);
  auto place = nodes.end();
  // Whoever writes files mostly has the names in order, so the last is asked
  // before the tree is searched.
  if (!nodes.empty() && !nodes.key_comp()(std::prev(place)->first, name)) {
    place = nodes.lower_bound(name);
    if (!nodes.key_comp()(name, place->first)) {
      return place->second;
    }
  }
  auto made = std::make_unique<NodeOf<Nodes>>(owner, name);
  const auto entry = nodes.emplace_hint(place, std::move(name), made.get());
  // A map whose order broke, by a change of the locale, may know the name all
  // the same: then it did not take the new object.
  if (entry->second == made.get()) {
    made.release();
  }
  return entry->second;
}

template <class Nodes>
NodeOf<Nodes>* Find(const Nodes& nodes, typename Nodes::key_type name) {
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
            typename Nodes::key_type new_name) {
  TrimName(new_name);
  // All that may throw comes before the first change, or changes nothing when
  // it throws.
  typename Nodes::key_type renamed = new_name;
  const auto [entered, is_free] = nodes.try_emplace(std::move(new_name), node);
  if (!is_free) {
    return false;
  }
  auto former = nodes.find(name);
  if (former == nodes.end() || former->second != node) {
    // A change of the locale hides names from a search. Left in the map, the
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
