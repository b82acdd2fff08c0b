#ifndef APPS_SIMULATOR_TAGS_TAG_TABLE_H
#define APPS_SIMULATOR_TAGS_TAG_TABLE_H

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "apps/simulator/values/value_type.h"
#include "apps/simulator/wire/bytes.h"

namespace sim {

const size_t kMaxTagName = 40;
const size_t kMaxDimensions = 3;
const uint64_t kMaxElements = 1000000;

/// Indices run from lower to upper, both included.
struct Dimension {
    uint32_t lower = 0;
    uint32_t upper = 0;
    uint64_t size() const { return uint64_t(upper) - lower + 1; }
};

/// One variable of the controller: a scalar, or an array of up to three dimensions whose elements
/// are kept row by row (the last index runs fastest).
class Tag {
 public:
    Tag(std::string name, const ValueType& type, std::vector<Dimension> dimensions);

    const std::string& name() const { return declaredName; }
    const ValueType& type() const { return *valueType; }
    const std::vector<Dimension>& dimensions() const { return bounds; }
    /// Number of elements, 1 for a scalar.
    size_t count() const { return elementCount; }
    /// Number of this tag's first element when all elements of the table are counted through.
    size_t ordinal() const { return firstOrdinal; }

    enum class Place { inside, outside, wrongDimensions };
    /// The element that the indices name. No index at all names the first one.
    Place find(const std::vector<uint32_t>& indices, size_t* element) const;

    /// The bytes of an element of any type but STRING. `element` is below count().
    uint8_t* bytes(size_t element) { return store.data() + element * valueType->size; }
    /// The characters of a STRING element. `element` is below count().
    std::string& string(size_t element) { return strings[element]; }

    /// How often the element was read, or what was written to it: see oracle.h.
    uint32_t& counter(size_t element) { return counters[element]; }

 private:
    friend class TagTable;
    std::string declaredName;
    const ValueType* valueType;
    std::vector<Dimension> bounds;
    size_t elementCount;
    size_t firstOrdinal = 0;
    Bytes store;
    std::vector<std::string> strings;
    std::vector<uint32_t> counters;
};

/// The controller's variables in the order in which they were added.
class TagTable {
 public:
    /// Takes the tag; null when there is one of this name already.
    Tag* add(Tag tag);
    /// The tag of this upper-case name; null when there is none.
    Tag* find(const std::string& upperName) const;
    /// The same for a name in any case.
    Tag* findAnyCase(const std::string& name) const;

    size_t size() const { return tags.size(); }
    Tag& at(size_t index) { return *tags[index]; }
    /// Number of elements of all tags.
    size_t elements() const { return elementTotal; }

 private:
    std::vector<std::unique_ptr<Tag>> tags;
    std::unordered_map<std::string, Tag*> byName;
    size_t elementTotal = 0;
};

/// The ASCII letters of the name in upper case.
std::string upperCase(const std::string& name);

}  // namespace sim

#endif
