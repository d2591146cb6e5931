// ZxPolLdapAddrList: an address list whose members are in a directory.
#pragma once

#include "addrlist/addr_list.h"

/**
 * The settings of a directory list: which server holds the members and how they are searched there. No directory
 * is ever contacted, so whatever concerns single addresses is refused with ZXPOL_E_NOT_SUPPORTED without a look
 * at the arguments.
 *
 * Invariant: nothing is cached; the settings are read and written in the store alone. One thread at a time.
 */
class ZXPOL_API ZxPolLdapAddrList : public ZxPolAddrList {
public:
    /// Takes `listKey` over; nothing is read yet.
    explicit ZxPolLdapAddrList(_ZxPolComHandle* listKey);
    /// @overload
    explicit ZxPolLdapAddrList(zxpol::StoreKey listKey);
    ~ZxPolLdapAddrList() override;

    /// Reads the settings up to the first failure; display name and comment may be missing. The type is 1 and the
    /// password "secret". A setting stored with another type than its own keeps what its field held; a longer
    /// text is cut to its field.
    void getAttrib(_ZxPolAddrListAttr* attr, int* error) override;

    /// Writes the settings up to the first failure, which one of the display name and the comment is not. The type
    /// is written whatever it is: with 0 the list is a normal one when it is next opened.
    void setAttrib(const _ZxPolAddrListAttr* attr, int* error) override;

    /// @{
    /// Refused: ZXPOL_E_NOT_SUPPORTED, whatever the arguments.
    void insertAddresses(const char** addresses, int* error) override;
    void removeAddresses(const char** addresses, int* error) override;
    void enumAddress(uint32_t index, char* buffer, uint32_t* size, int* error) override;
    void importAddresses(uint32_t format, uint32_t replace, const char* path, int* error) override;
    /// @}

    /// True with ZXPOL_E_NOT_SUPPORTED, and a weight of 0.
    bool matchAddress(const char* address, uint32_t* weight, ZxPolMatchWeightType weightType, int* error) override;

    /// Whether `attr` may be written: not null, all texts with NUL.
    static bool isValidAttrib(const _ZxPolAddrListAttr* attr);
};
