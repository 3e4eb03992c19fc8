#pragma once

#include "platform/Error.h"

#include <optional>
#include <utility>

namespace ondrel {

// What a platform operation gives back: a value, or the Error that kept it from one. Failing
// here is ordinary (a destination that does not exist yet), so it is returned, not thrown.
template <typename T> class [[nodiscard]] Result {
public:
    Result(T value) : m_value(std::move(value)) {}
    Result(Error error) : m_error(std::move(error)) {}

    bool ok() const { return m_value.has_value(); }
    explicit operator bool() const { return ok(); }

    const T& value() const& { return *m_value; }
    T& value() & { return *m_value; }
    T&& value() && { return std::move(*m_value); }
    const T& operator*() const& { return *m_value; }
    const T* operator->() const { return &*m_value; }
    T* operator->() { return &*m_value; }

    const Error& error() const { return m_error; }
    T value_or(T fallback) const { return ok() ? *m_value : std::move(fallback); }

    // The value, or throws the error: for callers whose failures pass on to their own caller.
    T valueOrThrow() && {
        if (!ok())
            throw m_error;
        return std::move(*m_value);
    }

private:
    std::optional<T> m_value;
    Error m_error;
};

template <> class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error) : m_error(std::move(error)), m_failed(true) {}

    bool ok() const { return !m_failed; }
    explicit operator bool() const { return ok(); }
    const Error& error() const { return m_error; }

    void throwIfFailed() const {
        if (m_failed)
            throw m_error;
    }

private:
    Error m_error;
    bool m_failed = false;
};

} // namespace ondrel
