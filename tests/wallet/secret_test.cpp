#include "wallet/secret.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string>

namespace {

// Looks into a buffer that still belongs to the text: after a wipe its capacity is there, its content is not.
bool all_zero(const void* memory, std::size_t size) {
    const auto* bytes = static_cast<const unsigned char*>(memory);
    return std::all_of(bytes, bytes + size, [](unsigned char byte) { return byte == 0; });
}

const std::string KEY(64, 'k');

}  // namespace

TEST(SecretText, LeavesNothingInItsBufferAfterAWipe) {
    SecretText text(KEY);
    const char* buffer = text.view().data();
    ASSERT_FALSE(all_zero(buffer, KEY.size()));
    text.wipe();
    EXPECT_TRUE(text.empty());
    EXPECT_TRUE(all_zero(buffer, KEY.size()));
}

TEST(SecretText, LeavesNothingOfALongTextBehindAShortOne) {
    SecretText copied(KEY);
    const SecretText other("ab");
    copied = other;
    EXPECT_EQ(copied.view(), "ab");
    SecretText resized(KEY);
    const char* buffer = resized.resize(4);
    EXPECT_TRUE(all_zero(buffer, KEY.size())) << "the buffer still has room for all of the old text";
}

TEST(SecretBytes, AreZeroAtFirstAndAfterTheirLife) {
    alignas(SecretBytes<32>) unsigned char place[sizeof(SecretBytes<32>)];
    std::memset(place, 0x5A, sizeof place);
    auto* bytes = new (place) SecretBytes<32>;
    EXPECT_TRUE(all_zero(bytes->data(), 32));
    std::memset(bytes->data(), 7, 32);
    bytes->~SecretBytes<32>();
    // Through a volatile pointer: the compiler may take the memory of an ended object for anything.
    const volatile unsigned char* left = place;
    EXPECT_EQ(std::count(left, left + sizeof place, 0), 32);
}
