/**
 * @file
 * PKCS#7 signatures (RFC 2315), made by the server over data that the application sends.
 *
 * The library neither computes nor checks a signature. Request and answer travel as base64 (RFC
 * 4648, section 4, without line breaks) of these records; all integers are 32 bits wide and
 * big-endian:
 *
 * Request
 * | offset | width | field |
 * |---|---|---|
 * | 0 | 4 | item count N, unsigned |
 * | 4 | 4 | length L1 of item 1, signed, at least 1 |
 * | 8 | L1 | the bytes of item 1 |
 * | 8 + L1 | 4 | length L2 of item 2, and so on; no padding, no terminator |
 *
 * Answer
 * | position | width | field |
 * |---|---|---|
 * | 0 | 4 | entry count M, signed |
 * | p = 4 | 1 | a flag; skipped |
 * | p + 1 | 4 | length K of the entry, signed |
 * | p + 5 | K | the signature of the item; the next entry starts at p + 5 + K |
 */
#ifndef MORVENN_NET_MVSERVERPROXY_CRYPTO_PKCS7_H
#define MORVENN_NET_MVSERVERPROXY_CRYPTO_PKCS7_H

#include <string>

#include "morvenn/net/mvserverproxy/Export.h"

namespace Morvenn::Net::MvServerProxy::Crypto {

/**
 * Signature requests. Has no state: each sign() is an exchange of its own, in a session of its own,
 * and starts the proxy.
 *
 * Every form throws Client::MSPProtocolException, "Size must be greater than 0", for an item
 * without bytes, and Client::MSPRuntimeException, type -1, for one whose pointer is null and for a
 * request record above 4294967295 bytes, all before anything is sent; what
 * Client::MvServerRequest::execute() throws; std::out_of_range for an answer whose entries lie
 * outside its data; std::bad_alloc for a negative or too large entry count. The count alone decides
 * how much room is asked for, before the entries are read: a string for each, up to 64 GiB.
 *
 * By design: an entry that is cut short by the end of the answer is returned cut.
 * (Pkcs7Answer.EntryBeyondTheDataIsCut)
 *
 * By design: an answer that is not base64 counts, without failure, up to its first foreign
 * character. (Pkcs7Answer.TextThatIsNotBase64CountsUpToItsFirstForeignCharacter)
 *
 * By design: when the exchange fails, the session and the request of that call are never released.
 * (Pkcs7.FailedExchangeKeepsSessionAndRequest)
 *
 * Thread rule: as for a request; concurrent calls need the proxy's consent.
 */
class MVCPP_API PKCS7 {
public:
    /** There is nothing to set up, copy or release. @{ */
    PKCS7();
    PKCS7(const PKCS7& other) = default;
    PKCS7& operator=(const PKCS7& other);
    ~PKCS7();
    /** @} */

    /**
     * Signs a batch.
     * @param data  @p count pointers, one an item; borrowed
     * @param count number of items
     * @param sizes @p count lengths in bytes, each at least 1; borrowed
     * @return an array of signatures in the order of the items, which the caller releases with
     *         `delete[]`; null, without an exchange, when @p data or @p sizes is null or @p count
     * is 0. The array has as many elements as the answer has entries; the caller takes that to be
     * @p count.
     */
    std::string* sign(const char** data, unsigned int count, int* sizes);

    /**
     * Signs a batch of texts.
     * By design: an item is copied up to its first zero byte while its full length is declared, so
     * this form is for texts without zero bytes. (Pkcs7.TextItemsAreCopiedUpToTheirFirstZeroByte)
     * @return as the batch form; null when @p items is null or @p count is 0.
     */
    std::string* sign(std::string* items, unsigned int count);

    /**
     * Signs one item.
     * By design: the array behind the result is never released, one std::string with its signature
     * for each call.
     * (Pkcs7.SingleFormsKeepTheirOneElementArray)
     * @throws Client::MSPRuntimeException type -1 when the answer has no entry.
     */
    std::string sign(std::string& item);

    /** The same for @p size bytes at @p data. */
    std::string sign(const char* data, unsigned int size);

private:
    MVCPP_LOCAL static std::string prepareRequest(const char** data, unsigned int count,
                                                  int* sizes);
    MVCPP_LOCAL static std::string* parseResponse(std::string& response, int& count);
    MVCPP_LOCAL static std::string* exchange(const char** data, unsigned int count, int* sizes,
                                             int& entries);
    MVCPP_LOCAL static std::string signOne(const char* data, int size);
    MVCPP_LOCAL static bool isLittleEndian();
    MVCPP_LOCAL static void reverse(char* bytes, unsigned int length);
    MVCPP_LOCAL static bool readBoolean(void* at);
    MVCPP_LOCAL static int readInt32(void* at);
    MVCPP_LOCAL static void writeInt32(void* at, unsigned int value);
};

}  // namespace Morvenn::Net::MvServerProxy::Crypto

#endif  // MORVENN_NET_MVSERVERPROXY_CRYPTO_PKCS7_H
