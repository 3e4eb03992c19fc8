#pragma once

#include <QString>

#include <concepts>
#include <functional>
#include <utility>

namespace ondrel {

// The barrier around every handler the windows connect to a signal or call from an event
// filter. A routine reports its own expected failures; one it lets pass (a collection's error on
// a name it did not expect, a failed allocation) becomes the common error report titled with the
// routine's name instead of unwinding through Qt's event loop, which would end the program and
// lose the user's unsaved spec. A Cancel (error 32755) ends the command silently, as a Cancel in
// a file dialog does everywhere else.
void runBehindBarrier(const QString& routine, const std::function<void()>& handler);

// A slot for connect(): calls the handler with as many of the signal's arguments as it takes,
// behind the barrier.
template <typename Handler> auto guarded(QString routine, Handler handler) {
    return [ routine = std::move(routine), handler = std::move(handler) ](
               auto&&... args) -> void requires std::invocable<const Handler&, decltype(args)...> {
        runBehindBarrier(routine,
                         [&] { std::invoke(handler, std::forward<decltype(args)>(args)...); });
    };
}

// The same for a member function of the receiving window.
template <typename Object, typename Class, typename... Args>
auto guarded(QString routine, Object* object, void (Class::*method)(Args...)) {
    return [routine = std::move(routine), object, method](Args... args) {
        runBehindBarrier(routine, [&] { (object->*method)(std::forward<Args>(args)...); });
    };
}

} // namespace ondrel
