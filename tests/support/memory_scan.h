// Looks for a secret in the memory of this process, as somebody with a core file of it would.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace zxtest {

// A secret of which this process knows another form only, so that the search does not find the searcher.
class HiddenSecret {
public:
    // One that nobody has seen before: letters and digits.
    static HiddenSecret random(size_t size) {
        HiddenSecret made;
        std::ifstream source("/dev/urandom", std::ios::binary);
        for (size_t i = 0; i < size; ++i) {
            const auto number = static_cast<unsigned char>(source.get());
            made._hidden += static_cast<char>("abcdefghijkmnpqrstuvwxyz23456789"[number % 32] ^ mask);
        }
        return made;
    }
    // The first bytes of a file.
    static HiddenSecret ofFile(const std::string& path, size_t size) {
        HiddenSecret made;
        const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        for (char byte = 0; made._hidden.size() < size && ::read(file, &byte, 1) == 1;)
            made._hidden += static_cast<char>(byte ^ mask);
        close(file);
        return made;
    }

    // Hands out the secret, in memory that is wiped afterwards.
    template <class Use>
    void reveal(Use use) const {
        std::vector<char> plain(_hidden.begin(), _hidden.end());
        for (char& byte : plain)
            byte = static_cast<char>(byte ^ mask);
        plain.push_back('\0');
        use(static_cast<const char*>(plain.data()));
        explicit_bzero(plain.data(), plain.size());
    }

    size_t size() const { return _hidden.size(); }
    char first() const { return static_cast<char>(_hidden[0] ^ mask); }
    bool isAt(const char* bytes) const {
        for (size_t i = 0; i < _hidden.size(); ++i)
            if ((bytes[i] ^ mask) != _hidden[i]) return false;
        return true;
    }

private:
    static constexpr char mask = 0x55;
    std::string _hidden;
};

struct MemoryFind {
    uint64_t address;
    std::string region;  // its line in /proc/self/maps
};

class MemoryScan {
public:
    MemoryScan() : _buffer(mmap(nullptr, bufferSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {}
    ~MemoryScan() { munmap(_buffer, bufferSize); }
    MemoryScan(const MemoryScan&) = delete;
    MemoryScan& operator=(const MemoryScan&) = delete;

    // Every place in memory that can be read where the secret stands.
    std::vector<MemoryFind> find(const HiddenSecret& secret) {
        std::vector<MemoryFind> found;
        const int memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
        std::ifstream maps("/proc/self/maps");
        for (std::string line; std::getline(maps, line);)
            look(memory, line, secret, found);
        close(memory);
        return found;
    }

private:
    static constexpr size_t bufferSize = size_t{1} << 20;
    // What is larger belongs to a sanitizer, and is mostly not there.
    static constexpr uint64_t largestRegion = uint64_t{1} << 28;

    void look(int memory, const std::string& line, const HiddenSecret& secret, std::vector<MemoryFind>& found) {
        uint64_t begin = 0;
        uint64_t end = 0;
        char dash = 0;
        std::string rights;
        std::istringstream(line) >> std::hex >> begin >> dash >> end >> rights;
        const bool isUnchangedFile = rights.find('w') == std::string::npos && line.find(" /") != std::string::npos;
        if (rights.compare(0, 1, "r") != 0 || isUnchangedFile || end - begin > largestRegion) return;
        // Pieces overlap by the length of the secret.
        for (uint64_t at = begin; at < end; at += bufferSize - secret.size()) {
            const size_t wanted = static_cast<size_t>(std::min<uint64_t>(bufferSize, end - at));
            const ssize_t got = pread(memory, _buffer, wanted, static_cast<off_t>(at));
            if (got > 0) lookInBuffer(static_cast<size_t>(got), at, line, secret, found);
        }
        explicit_bzero(_buffer, bufferSize);
    }

    void lookInBuffer(size_t size, uint64_t begin, const std::string& line, const HiddenSecret& secret,
                      std::vector<MemoryFind>& found) const {
        const char* const bytes = static_cast<const char*>(_buffer);
        for (size_t i = 0; i + secret.size() <= size; ++i) {
            const void* next = std::memchr(bytes + i, secret.first(), size - secret.size() - i + 1);
            if (next == nullptr) return;
            i = static_cast<size_t>(static_cast<const char*>(next) - bytes);
            const uint64_t address = begin + i;
            const bool isOwn =
                address + secret.size() > addressOf(_buffer) && address < addressOf(_buffer) + bufferSize;
            if (!isOwn && secret.isAt(bytes + i)) found.push_back({address, line});
        }
    }

    static uint64_t addressOf(const void* memory) { return reinterpret_cast<uintptr_t>(memory); }

    void* const _buffer;
};

}  // namespace zxtest
