#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

namespace fuzzing {

/// The bytes of an input.
[[nodiscard]] QByteArray bytes(const std::uint8_t* data, std::size_t size);

/// An input as text: UTF-8, in which every byte that is none stands for half a surrogate pair, so that texts which are
/// no Unicode occur as well.
[[nodiscard]] QString text(const QByteArray& bytes);

/// A file in memory, for subjects that read files.
class MemoryFile
{
public:
    explicit MemoryFile(const QByteArray& content);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    [[nodiscard]] QString path() const;

private:
    int m_descriptor;
};

/// Ends the program: @p promise, in words of the source, does not hold for the present input.
[[noreturn]] void fail(const char* promise, const char* file, int line);

} // namespace fuzzing

/// Asserts what a subject promises, in every kind of build.
#define FUZZ_REQUIRE(promise) ((promise) ? static_cast<void>(0) : fuzzing::fail(#promise, __FILE__, __LINE__))
