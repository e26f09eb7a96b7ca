#pragma once
// A file written through the C runtime whose every step is checked: a full
// disk or a failing device shows as an error text instead of a short or
// empty file that looks collected.

#include <QString>

#include <cstddef>
#include <cstdio>

namespace collect {

class CheckedFile final {
public:
    CheckedFile() = default;
    // Closes a file that is still open; its result is lost then.
    ~CheckedFile();
    CheckedFile(const CheckedFile&) = delete;
    CheckedFile& operator=(const CheckedFile&) = delete;

    // Opens with "wb+" (truncating). False with error() set.
    bool open(const QString& path);
    bool write(const void* data, std::size_t length);
    bool write(const char* text);
    // Flushes and closes; false when anything written did not reach the file.
    bool close();

    bool isOpen() const { return m_file != nullptr; }
    // What failed and why, with the file's path.
    QString error() const { return m_error; }

private:
    bool fail(const char* what, int error);

    std::FILE* m_file = nullptr;
    QString m_path;
    QString m_error;
};

// Writes a whole file; false with *error set when any step fails.
bool writeWholeFile(const QString& path, const void* data, std::size_t length, QString* error);

} // namespace collect
