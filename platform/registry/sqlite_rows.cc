#include "sqlite_rows.h"

#include <sodium.h>

#include <algorithm>

#include "bytes.h"

namespace zxreg {
namespace {

// Fixed: the checksum finds damage, it does not keep anyone from forging rows.
constexpr unsigned char checksumKey[crypto_shorthash_KEYBYTES] = {'s', 't', 'o', 'r', 'e', ' ', 'c', 'h',
                                                                  'e', 'c', 'k', 's', 'u', 'm', 's', '1'};

}  // namespace

uint64_t Checksums::ofBytes(std::string_view bytes) {
    static_assert(crypto_shorthash_BYTES == 8);
    char hash[crypto_shorthash_BYTES];
    crypto_shorthash(reinterpret_cast<unsigned char*>(hash), asBytes(bytes), bytes.size(), checksumKey);
    return numberAt(std::string_view(hash, sizeof hash), 0);
}

uint64_t Checksums::ofNode(uint64_t id, uint64_t parent, std::string_view name) {
    _buffer.assign(1, 'n');
    appendNumber(_buffer, id);
    appendNumber(_buffer, parent);
    _buffer += name;
    return ofBytes(_buffer);
}

uint64_t Checksums::ofValue(uint64_t node, const Value& value) {
    _buffer.assign(1, 'v');
    appendNumber(_buffer, value.id);
    appendNumber(_buffer, node);
    appendNumber(_buffer, value.type);
    appendNumber(_buffer, value.name().size());
    _buffer += value.name();
    _buffer.append(value.data(), value.size);
    return ofBytes(_buffer);
}

uint64_t Checksums::ofEntry(uint64_t revision, std::string_view touched) {
    _buffer.assign(1, 'j');
    appendNumber(_buffer, revision);
    _buffer += touched;
    return ofBytes(_buffer);
}

std::string Meta::packed() const {
    std::string bytes(1, 'm');
    for (const uint64_t number : {revision, nextNode, nextValue, totals.nodes, totals.values, totals.sum}) {
        appendNumber(bytes, number);
    }
    return bytes + fingerprint;
}

std::string packTouched(Touched touched) {
    std::sort(touched.begin(), touched.end());
    touched.erase(std::unique(touched.begin(), touched.end()), touched.end());
    std::string bytes;
    if (touched.size() > maxTouched) return bytes;
    for (const auto& [node, value] : touched) {
        appendNumber(bytes, node);
        appendNumber(bytes, value);
    }
    return bytes;
}

bool unpackTouched(std::string_view bytes, Touched& touched) {
    if (bytes.size() % 16 != 0) return false;
    for (size_t at = 0; at < bytes.size(); at += 16) {
        touched.emplace_back(numberAt(bytes, at), numberAt(bytes, at + 8));
    }
    return true;
}

}  // namespace zxreg
