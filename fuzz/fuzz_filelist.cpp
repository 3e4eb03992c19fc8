// The file-list reader: any bytes read as a list of full paths without a path repeated right
// after itself; the list written back one path a line (quoted where that keeps it whole) reads
// as the same list.
#include "fuzz/FuzzSupport.h"
#include "platform/FileList.h"
#include "platform/NativeText.h"

using namespace ondrel;
using fuzz::require;

namespace {

QByteArray written(const QStringList& items) {
    QByteArray out;
    for (const QString& item : items) {
        // A quoted item came without quotes inside; an unquoted one has no comma or trailing blank.
        const bool quote = !item.contains(u'"');
        // Written back in the bytes it was read from, as a saved selection writes its names.
        out += (quote ? "\"" : "") + NativeText::toNative(item) + (quote ? "\"" : "") + "\r\n";
    }
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QStringList items = FileList::parse(fuzz::bytesOf(data, size));
    for (qsizetype i = 0; i < items.size(); ++i) {
        require(FileList::isAbsolute(items[i]), "an item is not a full path");
        require(!items[i].contains(u'\n') && !items[i].contains(u'\r'), "an item holds a line end");
        require(i == 0 || items[i] != items[i - 1], "an item repeats the one before it");
    }
    require(FileList::parse(written(items)) == items, "the list written back reads differently");
    return 0;
}
