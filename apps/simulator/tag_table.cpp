#include "apps/simulator/tag_table.h"

#include <utility>

namespace sim {

Tag::Tag(std::string name, const ValueType& type, std::vector<Dimension> dimensions)
    : m_name(std::move(name)), m_type(&type), m_dimensions(std::move(dimensions)), m_count(1) {
    for (const Dimension& dimension : m_dimensions) {
        m_count *= size_t(dimension.size());
    }
    m_bytes.resize(m_count * m_type->size);
    m_strings.resize(m_type->code == kString ? m_count : 0);
    m_counters.assign(m_count, 1);
}

Tag::Place Tag::find(const std::vector<uint32_t>& indices, size_t* element) const {
    *element = 0;
    if (indices.empty()) {
        return Place::inside;
    }
    if (indices.size() != m_dimensions.size()) {
        return Place::wrongDimensions;
    }
    for (size_t i = 0; i < indices.size(); ++i) {
        const Dimension& dimension = m_dimensions[i];
        if (indices[i] < dimension.lower || indices[i] > dimension.upper) {
            return Place::outside;
        }
        *element = *element * size_t(dimension.size()) + (indices[i] - dimension.lower);
    }
    return Place::inside;
}

Tag* TagTable::add(Tag tag) {
    const std::string key = upperCase(tag.name());
    if (m_byName.count(key) != 0) {
        return nullptr;
    }
    tag.m_ordinal = m_elements;
    m_elements += tag.count();
    m_tags.push_back(std::make_unique<Tag>(std::move(tag)));
    m_byName[key] = m_tags.back().get();
    return m_tags.back().get();
}

Tag* TagTable::find(const std::string& upperName) const {
    const auto found = m_byName.find(upperName);
    return found == m_byName.end() ? nullptr : found->second;
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
