// One conversion through ICU: source bytes to UTF-16 in a pivot buffer, the pivot to target bytes.
#ifndef MORVENN_UTIL_UTF8CONVERTER_H
#define MORVENN_UTIL_UTF8CONVERTER_H

#include <unicode/ucnv.h>

#include <cstddef>
#include <functional>

namespace Morvenn::Net::MvServerProxy::Util::Internal {

enum class Direction { Encode, Decode };  // local to UTF-8, UTF-8 to local

class Utf8Converter {
public:
    using Sink = std::function<void(const char* piece, std::size_t size)>;

    /// @param length of what will be converted, in bytes; it sizes the buffers. A negative length
    ///        counts as a very large one, which ICU then refuses.
    /// By design: when a converter cannot be opened, the buffers, and the local converter if that
    /// one was opened, are never released.
    /// (TextConversion.ConverterThatCannotBeOpenedKeepsItsBuffers)
    Utf8Converter(Direction direction, int length);
    Utf8Converter(const Utf8Converter&) = delete;
    Utf8Converter& operator=(const Utf8Converter&) = delete;
    /// Closes the converters, wipes and frees the buffers.
    ~Utf8Converter();

    /// Converts and hands every piece of output to @p sink.
    void convert(const char* source, int length, const Sink& sink);

private:
    void emptyPivot(const UChar* end, bool isLast, const Sink& sink);
    UConverter* from() const { return m_direction == Direction::Encode ? m_local : m_utf8; }
    UConverter* to() const { return m_direction == Direction::Encode ? m_utf8 : m_local; }

    Direction m_direction;
    std::size_t m_pivotCapacity;   // UTF-16 units; one more is allocated
    std::size_t m_targetCapacity;  // bytes; one more is allocated
    UChar* m_pivot = nullptr;
    char* m_output = nullptr;
    UConverter* m_local = nullptr;
    UConverter* m_utf8 = nullptr;
};

}  // namespace Morvenn::Net::MvServerProxy::Util::Internal

#endif  // MORVENN_UTIL_UTF8CONVERTER_H
