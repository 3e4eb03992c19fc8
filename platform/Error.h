#pragma once

#include <QString>

namespace ondrel {

// Error numbers the system reports to the user; each has a standard description.
namespace ErrNo {
inline constexpr int InvalidCall = 5;
inline constexpr int Overflow = 6;
inline constexpr int OutOfMemory = 7;
inline constexpr int SubscriptOutOfRange = 9;
inline constexpr int TypeMismatch = 13;
inline constexpr int FileNotFound = 53;
inline constexpr int FileAlreadyOpen = 55;
inline constexpr int DiskFull = 61;
inline constexpr int DeviceUnavailable = 68;
inline constexpr int PermissionDenied = 70;
inline constexpr int PathFileAccess = 75;
inline constexpr int PathNotFound = 76;
inline constexpr int DuplicateKey = 457;
inline constexpr int CancelSelected = 32755;
} // namespace ErrNo

// A failure as the user sees it: a number, a description and the routine or object that raised
// it. The spec tree's collections throw it; the platform layer returns it inside a Result.
class Error {
public:
    Error() = default;
    explicit Error(int number, QString source = {});
    Error(int number, QString description, QString source);

    // An errno value mapped to the system's numbers; "path" decides between "file not found" and
    // "path not found" for ENOENT (is the parent directory there?).
    static Error fromErrno(int errnoValue, const QString& path = {}, const QString& source = {});
    static int numberForErrno(int errnoValue, const QString& path = {});
    static QString standardDescription(int number);

    int number() const { return m_number; }
    const QString& description() const { return m_description; }
    const QString& source() const { return m_source; }

    friend bool operator==(const Error& a, const Error& b) { return a.m_number == b.m_number; }

private:
    int m_number = 0;
    QString m_description;
    QString m_source;
};

} // namespace ondrel
