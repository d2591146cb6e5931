// A normal address list that is slow and obvious: its values are texts, and each step of a change is done as it is
// told.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "model/cache_model.h"

namespace model {

using Addresses = std::vector<std::string>;

// The image of a value: each address with its NUL, and one more NUL.
std::string imageOf(const Addresses& addresses);

// The addresses of an image, up to the first empty one.
Addresses addressesOf(const std::string& image);

class ListModel {
public:
    // The images of the values "address1", "address2", ... by their numbers.
    using Images = std::map<unsigned, std::string>;

    // Each returns the result code. No addresses: the array's first element is null.
    int insert(const Addresses& addresses);
    int remove(const Addresses& addresses);
    int importText(const std::string& text, uint32_t format, uint32_t replace);

    // Fills the cache anew, as the first object on the list does.
    void fillCache();

    // Whether an address was removed from a list in which some are stored twice, so that it may be there still. Then
    // whoever opens the list next fills the cache anew.
    bool isOutOfStep() const { return _isOutOfStep; }

    // What a value holds from now on, without the list being told; an empty image means no value.
    void setImage(unsigned number, const std::string& image);

    const Images& images() const { return _images; }
    const CacheModel& cache() const { return _cache; }

private:
    struct SubList {
        unsigned number;
        Addresses addresses;
        bool isDirty;

        size_t imageLength() const { return imageOf(addresses).size(); }
        // The position of an address, or the number of addresses.
        size_t find(const std::string& address) const;
    };
    using SubLists = std::vector<SubList>;
    using Numbers = std::vector<unsigned>;

    Numbers numbers() const;
    SubList load(unsigned number) const;
    int flush(const SubList& subList);
    bool findHolder(const std::string& address, const Numbers& numbers, SubLists& loaded, size_t& holder) const;
    // False when it met an address that cannot be moved.
    bool shift(size_t from, SubLists& loaded, Numbers& numbers);
    enum class Fetched { address, nothing, unreadable };
    static Fetched fetchFirst(const SubList& subList, std::string& address);
    void deleteValue(size_t index, Numbers& numbers);
    void deleteAll();

    Images _images;
    CacheModel _cache;
    bool _isOutOfStep = false;
    bool _mayHaveDoubles = false;
};

}  // namespace model
