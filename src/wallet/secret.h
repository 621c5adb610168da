// Text and bytes that wipe themselves. Mnemonics, private keys, seeds and chain codes live in these types
// only; every buffer that they ever used is overwritten with OPENSSL_cleanse before its memory is given back.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// Overwrites memory in a way that the compiler does not remove.
void cleanse_memory(void* memory, std::size_t size);

template <typename T>
struct CleansingAllocator {
    using value_type = T;
    CleansingAllocator() = default;
    template <typename U>
    CleansingAllocator(const CleansingAllocator<U>&) noexcept {}
    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* memory, std::size_t count) {
        cleanse_memory(memory, count * sizeof(T));
        std::allocator<T>().deallocate(memory, count);
    }
    bool operator==(const CleansingAllocator&) const { return true; }
};

using SecretBuffer = std::vector<std::uint8_t, CleansingAllocator<std::uint8_t>>;

// Text that is never left behind in memory. It grows like a string; view() is valid until the next change.
class SecretText {
 public:
    SecretText() = default;
    explicit SecretText(std::string_view text) { assign(text); }
    SecretText(const SecretText&) = default;
    SecretText(SecretText&&) = default;
    // Through assign: a vector's own copy would keep the end of a longer old text in its buffer.
    SecretText& operator=(const SecretText& other) {
        assign(other.view());
        return *this;
    }
    SecretText& operator=(SecretText&&) = default;
    ~SecretText() = default;

    // `text` may be a part of this very text.
    void assign(std::string_view text) {
        std::vector<char, CleansingAllocator<char>> copy(text.begin(), text.end());
        text_.swap(copy);
    }
    // Overwrites the buffer in place and empties the text.
    void wipe() {
        if (!text_.empty()) cleanse_memory(text_.data(), text_.size());
        text_.clear();
    }
    char* data() { return text_.data(); }
    std::string_view view() const { return {text_.data(), text_.size()}; }
    std::size_t size() const { return text_.size(); }
    bool empty() const { return text_.empty(); }
    // A buffer of `size` characters, of unset content, for a function that writes in place.
    char* resize(std::size_t size) {
        wipe();
        text_.resize(size);
        return text_.data();
    }

 private:
    std::vector<char, CleansingAllocator<char>> text_;
};

// A fixed number of secret bytes, all zero at first and wiped at the end.
template <std::size_t N>
class SecretBytes {
 public:
    SecretBytes() = default;
    SecretBytes(const SecretBytes&) = default;
    SecretBytes& operator=(const SecretBytes&) = default;
    ~SecretBytes() { wipe(); }

    void wipe() { cleanse_memory(bytes_.data(), N); }
    std::uint8_t* data() { return bytes_.data(); }
    const std::uint8_t* data() const { return bytes_.data(); }
    static constexpr std::size_t size() { return N; }

 private:
    std::array<std::uint8_t, N> bytes_{};
};
