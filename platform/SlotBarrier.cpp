#include "platform/SlotBarrier.h"

#include "platform/Error.h"
#include "platform/MsgBox.h"

#include <exception>
#include <new>

namespace ondrel {

void runBehindBarrier(const QString& routine, const std::function<void()>& handler) {
    try {
        handler();
    } catch (const Error& error) {
        if (error.number() != ErrNo::CancelSelected)
            ShowErrorReport(error, routine);
    } catch (const std::bad_alloc&) {
        ShowErrorReport(Error(ErrNo::OutOfMemory, routine), routine);
    } catch (const std::exception& failure) {
        ShowErrorReport(Error(ErrNo::InvalidCall, QString::fromLocal8Bit(failure.what()), routine),
                        routine);
    }
}

} // namespace ondrel
