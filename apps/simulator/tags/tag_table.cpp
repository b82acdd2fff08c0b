#include "apps/simulator/tags/tag_table.h"

#include <utility>

namespace sim {

Tag::Tag(std::string name, const ValueType& type, std::vector<Dimension> dimensions)
    : declaredName(std::move(name)),
      valueType(&type),
      bounds(std::move(dimensions)),
      elementCount(1) {
    for (const Dimension& dimension : bounds) {
        elementCount *= size_t(dimension.size());
    }
    store.resize(elementCount * valueType->size);
    strings.resize(valueType->code == kString ? elementCount : 0);
    counters.assign(elementCount, 1);
}

Tag::Place Tag::find(const std::vector<uint32_t>& indices, size_t* element) const {
    *element = 0;
    if (indices.empty()) {
        return Place::inside;
    }
    if (indices.size() != bounds.size()) {
        return Place::wrongDimensions;
    }
    for (size_t i = 0; i < indices.size(); ++i) {
        const Dimension& dimension = bounds[i];
        if (indices[i] < dimension.lower || indices[i] > dimension.upper) {
            return Place::outside;
        }
        *element = *element * size_t(dimension.size()) + (indices[i] - dimension.lower);
    }
    return Place::inside;
}

Tag* TagTable::add(Tag tag) {
    const std::string key = upperCase(tag.name());
    if (byName.count(key) != 0) {
        return nullptr;
    }
    tag.firstOrdinal = elementTotal;
    elementTotal += tag.count();
    tags.push_back(std::make_unique<Tag>(std::move(tag)));
    byName[key] = tags.back().get();
    return tags.back().get();
}

Tag* TagTable::find(const std::string& upperName) const {
    const auto found = byName.find(upperName);
    return found == byName.end() ? nullptr : found->second;
}

Tag* TagTable::findAnyCase(const std::string& name) const {
    return find(upperCase(name));
}

std::string upperCase(const std::string& name) {
    std::string upper = name;
    for (char& c : upper) {
        c = c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
    }
    return upper;
}

}  // namespace sim
