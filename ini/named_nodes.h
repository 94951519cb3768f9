// What a document does with its sections, and a section with its keys. Both are
// maps from names to objects that they own.
//
// Whatever fails: an entry's name and the object's own name are the same text,
// and no object has two entries.
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

namespace korvan::ini {

// Section or Key, for a map of sections or keys.
template <class Nodes>
using NodeOf = std::remove_pointer_t<typename Nodes::mapped_type>;

// Returns null if there is no object of that name.
template <class Nodes>
NodeOf<Nodes>* Find(const Nodes& nodes, typename Nodes::key_type&& name) {
  TrimName(name);
  const auto found = nodes.find(name);
  return found == nodes.end() ? nullptr : found->second;
}

// Whether a name belongs between the entry before `place` and the one at
// `place`. Only such a place may be given to the map as a hint, unless all
// names are ordered (see IsOrdered): a map that is given a hint between names
// without an order loses entries. `emplace` gives itself a hint; `insert` of an
// entry gives none, and at worst a name then has two entries.
template <class Nodes>
bool BelongsAt(const Nodes& nodes, typename Nodes::const_iterator place,
               const typename Nodes::key_type& name) {
  const auto comes_before = [](const auto& left, const auto& right) {
    const int difference = CompareNames(left, right);
    // Of two units 0x80000000 apart, each would come before the other.
    return difference < 0 && difference != INT_MIN;
  };
  return (place == nodes.begin() ||
          comes_before(std::prev(place)->first, name)) &&
         (place == nodes.end() || comes_before(name, place->first));
}

// Creates an object with an entry at `place`, or wherever the map puts it if
// the name does not belong there. Names without an order may let the map find
// the name after all. Then it keeps what it has.
template <class Nodes, class Owner>
NodeOf<Nodes>* Create(Nodes& nodes, typename Nodes::const_iterator place,
                      bool belongs, Owner* owner,
                      typename Nodes::key_type&& name) {
  using Entry = typename Nodes::value_type;
  auto created = std::make_unique<NodeOf<Nodes>>(owner, name);
  const auto entry =
      belongs ? nodes.emplace_hint(place, std::move(name), created.get())
              : nodes.insert(Entry(std::move(name), created.get())).first;
  if (entry->second == created.get()) {
    static_cast<void>(created.release());  // the map owns it now
  }
  return entry->second;
}

// Returns the object of that name, and creates it if there is none.
template <class Nodes, class Owner>
NodeOf<Nodes>* FindOrCreate(Nodes& nodes, Owner* owner,
                            typename Nodes::key_type&& name) {
  TrimName(name);
  const auto place = nodes.lower_bound(name);
  if (place != nodes.end() && !nodes.key_comp()(name, place->first)) {
    return place->second;
  }
  const bool belongs = kAllNamesAreOrdered<typename Nodes::key_type> ||
                       BelongsAt(nodes, place, name);
  return Create(nodes, place, belongs, owner, std::move(name));
}

// The same, quicker where the name comes after all others, as in a text that
// has its names in order.
template <class Nodes, class Owner>
NodeOf<Nodes>* AppendOrFind(Nodes& nodes, Owner* owner,
                            typename Nodes::key_type&& name) {
  TrimName(name);
  if (BelongsAt(nodes, nodes.end(), name)) {
    return Create(nodes, nodes.end(), true, owner, std::move(name));
  }
  return FindOrCreate(nodes, owner, std::move(name));
}

// Removes the entry of a name and destroys its object. The name must have been
// trimmed; it may be the object's own.
template <class Nodes>
void Remove(Nodes& nodes, const typename Nodes::key_type& name) {
  if (const auto found = nodes.find(name); found != nodes.end()) {
    const std::unique_ptr<NodeOf<Nodes>> removed(found->second);
    nodes.erase(found);
  }
}

// Removes the entry of an object, and destroys it. A search by its name might
// miss it, or find another, where names have no order.
template <class Nodes>
void RemoveEntry(Nodes& nodes, NodeOf<Nodes>* node) {
  const std::unique_ptr<NodeOf<Nodes>> removed(node);
  nodes.erase(std::ranges::find(nodes, node, &Nodes::value_type::second));
}

template <class Nodes>
void RemoveAll(Nodes& nodes) {
  for (const auto& [name, node] : nodes) {
    delete node;
  }
  nodes.clear();
}

// Renames `node`, whose own name is `name`, and its entry. It has none if a
// caller made it and never entered it. Returns false, with nothing changed, if
// the new name is taken. Strong guarantee.
template <class Nodes>
bool Rename(Nodes& nodes, NodeOf<Nodes>* node, typename Nodes::key_type& name,
            typename Nodes::key_type&& new_name) {
  using Entry = typename Nodes::value_type;
  TrimName(new_name);
  typename Nodes::key_type copy = new_name;
  const auto [entered, is_new] = nodes.insert(Entry(std::move(new_name), node));
  if (!is_new) {
    return false;
  }
  // Nothing throws from here on.
  const auto is_former = [node, entry = &*entered](const auto& other) {
    return other.second == node && &other != entry;
  };
  auto former = nodes.find(name);
  if (former == nodes.end() || !is_former(*former)) {
    // After a change of the locale a search may miss entries. The former one
    // must go, or the object would be destroyed twice.
    former = std::find_if(nodes.begin(), nodes.end(), is_former);
  }
  if (former != nodes.end()) {
    nodes.erase(former);
  }
  name = std::move(copy);
  return true;
}

}  // namespace korvan::ini

#endif  // KORVAN_INI_NAMED_NODES_H_
