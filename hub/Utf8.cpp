#include "Utf8.h"

#include <cstddef>

namespace Morvenn::Net::MvServerProxy::Hub {
namespace {

// One row for each range of first bytes: how many bytes follow, and the range of the second.
struct Form {
    unsigned char first, last;
    unsigned char following;
    unsigned char secondFirst, secondLast;
};

constexpr Form kForms[] = {
    {0x00, 0x7f, 0, 0x00, 0x00},  //
    {0xc2, 0xdf, 1, 0x80, 0xbf},  // c0 and c1 would be longer than needed
    {0xe0, 0xe0, 2, 0xa0, 0xbf},  //
    {0xe1, 0xec, 2, 0x80, 0xbf},  //
    {0xed, 0xed, 2, 0x80, 0x9f},  // no surrogates
    {0xee, 0xef, 2, 0x80, 0xbf},  //
    {0xf0, 0xf0, 3, 0x90, 0xbf},  //
    {0xf1, 0xf3, 3, 0x80, 0xbf},  //
    {0xf4, 0xf4, 3, 0x80, 0x8f},  // up to U+10FFFF
};

const Form* formOf(unsigned char first) {
    for (const Form& form : kForms) {
        if (first >= form.first && first <= form.last) {
            return &form;
        }
    }
    return nullptr;
}

bool within(char c, unsigned char low, unsigned char high) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= low && byte <= high;
}

}  // namespace

bool isUtf8(std::string_view text) {
    while (!text.empty()) {
        const Form* form = formOf(static_cast<unsigned char>(text.front()));
        if (form == nullptr || text.size() <= form->following) {
            return false;
        }
        if (form->following > 0 && !within(text[1], form->secondFirst, form->secondLast)) {
            return false;
        }
        for (std::size_t i = 2; i <= form->following; ++i) {
            if (!within(text[i], 0x80, 0xbf)) {
                return false;
            }
        }
        text.remove_prefix(form->following + std::size_t{1});
    }
    return true;
}

}  // namespace Morvenn::Net::MvServerProxy::Hub
