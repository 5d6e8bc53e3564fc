#include "TorvelPlatform/foundation/PropertyListForms.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

namespace torvel {
namespace {

constexpr std::size_t headerSize = 8, trailerSize = 32;

// The form lets objects be shared, so that a small file can stand for a list without end. This bounds what it
// stands for, beyond its own size, once every reference is followed.
constexpr std::uint64_t maximumExpansion = std::uint64_t{64} << 20;
constexpr std::uint64_t sizeOfAnyNode = 96;

class Checker {
  public:
    explicit Checker(std::string_view bytes) : m_bytes(bytes) {}

    std::optional<PropertyListError> check() {
        if (trailer() && object(m_top, 0)) return std::nullopt;
        return m_error;
    }

  private:
    // What is known of an object once it is checked.
    struct Node {
        std::uint64_t expandedSize = 0;  // 0 as long as it is unknown
        int height = 0;
        bool open = false;  // on the way from the top to the object in hand
    };

    struct Marker {
        unsigned kind, low;
        std::uint64_t count;
        std::size_t payload;  // where what follows the marker and the count begins
    };

    bool fail(std::size_t offset, const std::string& message) {
        m_error.description = "offset " + std::to_string(offset) + ": " + message;
        return false;
    }

    std::uint64_t number(std::size_t offset, std::size_t width) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < width; ++i)
            value = value << 8 | static_cast<unsigned char>(m_bytes[offset + i]);
        return value;
    }

    bool trailer() {
        if (m_bytes.size() < headerSize + trailerSize) return fail(m_bytes.size(), "the file is too short");
        m_trailer = m_bytes.size() - trailerSize;
        m_offsetWidth = number(m_trailer + 6, 1);
        m_referenceWidth = number(m_trailer + 7, 1);
        const std::uint64_t count = number(m_trailer + 8, 8);
        m_top = number(m_trailer + 16, 8);
        m_table = number(m_trailer + 24, 8);
        const auto isWidth = [](std::uint64_t width) { return width >= 1 && width <= 8; };
        if (!isWidth(m_offsetWidth)) return fail(m_trailer + 6, "the offset width is not 1 to 8");
        if (!isWidth(m_referenceWidth)) return fail(m_trailer + 7, "the reference width is not 1 to 8");
        if (m_table < headerSize || m_table > m_trailer)
            return fail(m_trailer + 24, "the offset table is outside the file");
        if (count > (m_trailer - m_table) / m_offsetWidth)
            return fail(m_trailer + 8, "more objects than offsets");
        if (m_top >= count) return fail(m_trailer + 16, "the top object is none of the objects");
        m_nodes.resize(count);
        return true;
    }

    // Checks an object and all that it refers to.
    bool object(std::uint64_t index, int depth) {
        const std::size_t entry = m_table + index * m_offsetWidth;
        const std::uint64_t offset = number(entry, m_offsetWidth);
        if (offset < headerSize || offset >= m_table)
            return fail(entry, "the object's offset is outside the file");
        Node& node = m_nodes[index];
        if (node.open) return fail(offset, "the container holds itself");
        if (node.expandedSize == 0) {
            node.open = true;
            node.expandedSize = sizeOfAnyNode;
            Marker marker{};
            if (!readMarker(offset, marker) || !content(node, offset, marker, depth)) return false;
            node.open = false;
        }
        if (node.expandedSize > m_bytes.size() + maximumExpansion)
            return fail(offset, "the list is too large once expanded");
        if (depth + node.height > maximumPropertyListDepth)
            return fail(offset, "containers are nested too deeply");
        return true;
    }

    bool readMarker(std::size_t offset, Marker& marker) {
        const unsigned byte = static_cast<unsigned char>(m_bytes[offset]);
        marker = {byte >> 4u, byte & 15u, byte & 15u, offset + 1};
        const bool counted = marker.kind == 4 || marker.kind == 5 || marker.kind == 6 || marker.kind >= 10;
        if (!counted || marker.low != 15) return true;
        const unsigned width =
            marker.payload < m_table ? static_cast<unsigned char>(m_bytes[marker.payload]) : 0;
        if (width < 0x10 || width > 0x13) return fail(marker.payload, "expected an integer as the count");
        const std::size_t size = std::size_t{1} << (width & 15u);
        if (m_table - marker.payload - 1 < size) return fail(marker.payload, "the count overruns the file");
        marker.count = number(marker.payload + 1, size);
        marker.payload += 1 + size;
        return true;
    }

    bool content(Node& node, std::size_t offset, const Marker& marker, int depth) {
        switch (marker.kind) {
            case 0:
                return marker.low == 8 || marker.low == 9 || fail(offset, "neither true nor false");
            case 1:
                return integer(offset, marker);
            case 2:
                return marker.low == 2 || marker.low == 3 ? bytes(node, offset, marker, 1 << marker.low)
                                                          : fail(offset, "a real of unknown width");
            case 3:
                return marker.low == 3 && bytes(node, offset, marker, 8) ? date(marker)
                                                                         : fail(offset, "a malformed date");
            case 4:
                return bytes(node, offset, marker, marker.count);
            case 5:
                return bytes(node, offset, marker, marker.count) && text(marker, 1);
            case 6:
                return bytes(node, offset, marker, marker.count, 2) && text(marker, 2);
            case 8:
                return marker.low < 4 ? bytes(node, offset, marker, marker.low + 1)
                                      : fail(offset, "a unique identifier of unknown width");
            case 10:
                return references(node, offset, marker, 1, depth);
            case 13:
                return references(node, offset, marker, 2, depth) && keys(marker);
            default:
                return fail(offset, "an object of unknown kind " + std::to_string(marker.kind));
        }
    }

    // Whether `count` units lie inside the file; adds them to the expanded size.
    bool bytes(Node& node, std::size_t offset, const Marker& marker, std::uint64_t count,
               std::uint64_t unit = 1) {
        if (count > (m_table - marker.payload) / unit) return fail(offset, "the object overruns the file");
        node.expandedSize += count * unit;
        return true;
    }

    bool integer(std::size_t offset, const Marker& marker) {
        const std::size_t width = std::size_t{1} << marker.low;
        if (marker.low > 4 || m_table - marker.payload < width) return fail(offset, "a malformed integer");
        if (width < 16) return true;
        const auto high = static_cast<std::int64_t>(number(marker.payload, 8));
        const auto low = static_cast<std::int64_t>(number(marker.payload + 8, 8));
        return high == (low < 0 ? -1 : 0) || fail(offset, "the integer does not fit into 64 bits");
    }

    bool date(const Marker& marker) {
        const auto seconds = std::bit_cast<double>(number(marker.payload, 8));  // since 2001
        constexpr double limit = 8.0e9;  // 250 years each way: nanoseconds in 64 bits hold little more
        return std::abs(seconds) < limit || fail(marker.payload, "the date is out of range");
    }

    // No NUL characters, which would end the text for libplist, and no surrogates without their partner,
    // which it would leave out.
    bool text(const Marker& marker, std::size_t width) {
        bool partnerDue = false;
        for (std::size_t i = 0; i < marker.count; ++i) {
            const std::uint64_t unit = number(marker.payload + i * width, width);
            if (unit == 0) return fail(marker.payload, "a NUL character in a text");
            const bool isTrail = unit >= 0xDC00 && unit <= 0xDFFF;
            const bool isLead = unit >= 0xD800 && unit <= 0xDBFF;
            const bool cut = isLead && i + 1 == marker.count;
            if (isTrail != partnerDue || cut) return fail(marker.payload, "malformed UTF-16 in a text");
            partnerDue = isLead;
        }
        return true;
    }

    std::uint64_t reference(const Marker& marker, std::uint64_t position) const {
        return number(marker.payload + position * m_referenceWidth, m_referenceWidth);
    }

    bool references(Node& node, std::size_t offset, const Marker& marker, std::uint64_t perItem, int depth) {
        const std::uint64_t perEntry = perItem * m_referenceWidth;
        if (marker.count > (m_table - marker.payload) / perEntry)
            return fail(offset, "the object overruns the file");
        if (depth == maximumPropertyListDepth) return fail(offset, "containers are nested too deeply");
        for (std::uint64_t i = 0; i < marker.count * perItem; ++i) {
            const std::uint64_t index = reference(marker, i);
            if (index >= m_nodes.size()) return fail(offset, "a reference to none of the objects");
            if (!object(index, depth + 1)) return false;
            node.expandedSize += m_nodes[index].expandedSize;
            node.height = std::max(node.height, m_nodes[index].height + 1);
            if (node.expandedSize > m_bytes.size() + maximumExpansion)
                return fail(offset, "the list is too large once expanded");
        }
        return true;
    }

    bool keys(const Marker& marker) {
        for (std::uint64_t i = 0; i < marker.count; ++i) {
            const std::uint64_t offset =
                number(m_table + reference(marker, i) * m_offsetWidth, m_offsetWidth);
            const unsigned kind = static_cast<unsigned char>(m_bytes[offset]) >> 4u;
            if (kind != 5 && kind != 6) return fail(offset, "expected a string as the key");
        }
        return true;
    }

    std::string_view m_bytes;
    std::size_t m_trailer = 0;
    std::uint64_t m_offsetWidth = 0, m_referenceWidth = 0, m_top = 0, m_table = 0;
    std::vector<Node> m_nodes;
    PropertyListError m_error;
};

}  // namespace

std::optional<PropertyListError> faultInBinaryPropertyList(std::string_view bytes) {
    return Checker(bytes).check();
}

}  // namespace torvel
