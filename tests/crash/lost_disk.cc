#include "crash/lost_disk.h"

#include <unistd.h>

#include <sstream>

#include "crash/damaged_store.h"

namespace crash {

LostDisk::LostDisk(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        File& file = _files[path];
        file.isThere = access(path.c_str(), F_OK) == 0;
        if (file.isThere) file.durable = readFile(path);
    }
}

void LostDisk::cutPower(const std::string& diary, model::RandomSource& random) {
    follow(diary);
    for (auto& [path, file] : _files) {
        loseSome(file, random);
        unlink(path.c_str());
        if (file.isThere) writeFile(path, file.durable);
    }
}

// The last entry may be cut: then its call was not made.
void LostDisk::follow(const std::string& diary) {
    std::istringstream entries(diary);
    for (std::string line; std::getline(entries, line) && !entries.eof();) {
        std::istringstream words(line);
        char kind = 0;
        std::string path;
        size_t at = 0;
        size_t size = 0;
        words >> kind >> path >> at >> size;
        std::string bytes(size, '\0');
        if (!entries.read(bytes.data(), static_cast<std::streamsize>(size))) return;
        const auto found = _files.find(path);
        if (found == _files.end()) continue;
        File& file = found->second;
        if (kind == 'u') {
            file = File();
            continue;
        }
        file.isThere = true;
        if (kind != 's') {
            file.unsynced.push_back({kind == 't', at, std::move(bytes)});
            continue;
        }
        for (const Step& step : file.unsynced)
            carryOut(step, file.durable);
        file.unsynced.clear();
    }
}

void LostDisk::carryOut(const Step& step, std::string& bytes) {
    if (step.isCut) return bytes.resize(step.at);
    if (bytes.size() < step.at + step.bytes.size()) bytes.resize(step.at + step.bytes.size());
    bytes.replace(step.at, step.bytes.size(), step.bytes);
}

void LostDisk::loseSome(File& file, model::RandomSource& random) {
    constexpr size_t sector = 512;
    const size_t first = random.below(file.unsynced.size() + 1);
    const bool isInOrder = random.inPercent(50);
    _unsynced += file.unsynced.size();
    for (size_t number = 0; number < file.unsynced.size(); ++number) {
        Step& step = file.unsynced[number];
        const bool isDone = isInOrder ? number < first : random.inPercent(50);
        if (!isDone) ++_lost;
        const bool isTorn = !isDone && random.inPercent(10) && step.bytes.size() > sector;
        if (isTorn) step.bytes.resize(sector * random.between(1, step.bytes.size() / sector));
        if (isDone || isTorn) carryOut(step, file.durable);
    }
    file.unsynced.clear();
}

}  // namespace crash
