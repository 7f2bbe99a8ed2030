// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Numbers in binary files. All files of the program are little-endian with
// fields of fixed width, whatever the machine is. On a little-endian machine
// the conversions vanish and a run of numbers is one block of bytes.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <istream>
#include <ostream>
#include <span>
#include <type_traits>

namespace vorpen {

template <class T>
concept PlainNumber = std::is_arithmetic_v<T>;

/// The bytes of a number, lowest first.
template <PlainNumber T>
[[nodiscard]] std::array<char, sizeof(T)> toLittleEndian(T value) {
    std::array<char, sizeof(T)> bytes;
    std::memcpy(bytes.data(), &value, sizeof(T));
    if constexpr (std::endian::native == std::endian::big) std::reverse(bytes.begin(), bytes.end());
    return bytes;
}

/// The number whose bytes begin at `bytes`, lowest first.
template <PlainNumber T>
[[nodiscard]] T fromLittleEndian(const char* bytes) {
    std::array<char, sizeof(T)> copy;
    std::memcpy(copy.data(), bytes, sizeof(T));
    if constexpr (std::endian::native == std::endian::big) std::reverse(copy.begin(), copy.end());
    T value;
    std::memcpy(&value, copy.data(), sizeof(T));
    return value;
}

template <PlainNumber T>
void writeLittleEndian(std::ostream& out, T value) {
    const auto bytes = toLittleEndian(value);
    out.write(bytes.data(), bytes.size());
}

template <PlainNumber T>
void writeLittleEndian(std::ostream& out, std::span<const T> values) {
    if constexpr (std::endian::native == std::endian::little) {
        out.write(reinterpret_cast<const char*>(values.data()),
                  static_cast<std::streamsize>(values.size_bytes()));
    } else {
        for (T value : values) writeLittleEndian(out, value);
    }
}

/// False when the stream ends before the number is complete; the value is then
/// left as it was.
template <PlainNumber T>
[[nodiscard]] bool readLittleEndian(std::istream& in, T& value) {
    std::array<char, sizeof(T)> bytes;
    if (!in.read(bytes.data(), bytes.size())) return false;
    value = fromLittleEndian<T>(bytes.data());
    return true;
}

/// Fills all values; false when the stream ends before.
template <PlainNumber T>
[[nodiscard]] bool readLittleEndian(std::istream& in, std::span<T> values) {
    if constexpr (std::endian::native == std::endian::little) {
        return static_cast<bool>(in.read(reinterpret_cast<char*>(values.data()),
                                         static_cast<std::streamsize>(values.size_bytes())));
    } else {
        for (T& value : values)
            if (!readLittleEndian(in, value)) return false;
        return true;
    }
}

}  // namespace vorpen
