#include "ui/controls/DirList.h"

#include "platform/FileSystem.h"
#include "platform/MsgBox.h"
#include "platform/NativePath.h"
#include "platform/NativeText.h"
#include "platform/SlotBarrier.h"
#include "platform/Volumes.h"
#include "ui/controls/DirListModel.h"

#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QStyledItemDelegate>

namespace ondrel {

namespace {

const QString kSource = QStringLiteral("DirList");

// Indents each row by its depth, so the open directories read as a path going down.
class IndentDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        QStyleOptionViewItem indented(option);
        indented.rect.setLeft(indented.rect.left() + indent(option, index));
        QStyledItemDelegate::paint(painter, indented, index);
    }
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        return QStyledItemDelegate::sizeHint(option, index) + QSize(indent(option, index), 0);
    }

private:
    static int indent(const QStyleOptionViewItem& option, const QModelIndex& index) {
        return index.data(DirListModel::DepthRole).toInt() * option.fontMetrics.height();
    }
};

// Where the tree of dir starts: the mount point of the volume that holds it, as long as dir
// lies below it by name (a link into another volume keeps the tree of the link's own path).
QByteArray rootOf(const QByteArray& dir) {
    const QByteArray mountPoint = Volumes::mountPointOf(dir);
    if (mountPoint == "/" || dir == mountPoint || dir.startsWith(mountPoint + '/'))
        return mountPoint;
    return QByteArrayLiteral("/");
}

} // namespace

DirList::DirList(QWidget* parent) : QListView(parent), m_model(new DirListModel(this)) {
    setAccessibleName(QStringLiteral("Directory"));
    setFocusPolicy(Qt::StrongFocus);
    setModel(m_model);
    setItemDelegate(new IndentDelegate(this));
    setUniformItemSizes(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    connect(this, &QListView::doubleClicked, this,
            guarded(QStringLiteral("openRow"),
                    [this](const QModelIndex& index) { openRow(index.row()); }));

    // A burst of changes (a whole tree unpacked) is listed once.
    m_changedOnDisk.setSingleShot(true);
    m_changedOnDisk.setInterval(100);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_changedOnDisk,
            qOverload<>(&QTimer::start));
    connect(&m_changedOnDisk, &QTimer::timeout, this,
            guarded(QStringLiteral("refresh"), this, &DirList::refresh));

    if (!setPath(QDir::currentPath()))
        (void)setPath(QStringLiteral("/"));
}

DirList::~DirList() = default;

QString DirList::Path() const {
    return NativeText::toText(m_path);
}

Result<void> DirList::setPath(const QString& path) {
    if (path.isEmpty())
        return Error(ErrNo::PathNotFound, kSource);
    const QString absolute = QDir::isAbsolutePath(path) ? path : Path() + QLatin1Char('/') + path;
    return open(NativeText::toNative(QDir::cleanPath(absolute)));
}

Result<void> DirList::open(const QByteArray& dir) {
    Result<void> exists = FileSystem::checkDirectory(dir);
    if (!exists)
        return Error(exists.error().number(), kSource);
    Result<std::vector<QByteArray>> names = FileSystem::subDirectories(dir);
    if (!names)
        return Error(names.error().number(), kSource);

    const QByteArray selected =
        currentIndex().isValid() ? m_model->entry(currentIndex().row()).path : QByteArray();
    m_model->show(rootOf(dir), dir, names.value());
    const int keep = dir == m_path ? m_model->rowOf(selected) : -1;
    setCurrentIndex(m_model->index(keep >= 0 ? keep : m_model->currentRow()));
    scrollTo(currentIndex());

    if (dir == m_path)
        return {};
    m_path = dir;
    watch(dir);
    Q_EMIT pathChanged(Path());
    return {};
}

void DirList::watch(const QByteArray& dir) {
    if (!m_watcher.directories().isEmpty())
        m_watcher.removePaths(m_watcher.directories());
    // The watcher takes the name in Qt's own encoding of file names, not ours.
    m_watcher.addPath(QFile::decodeName(dir));
}

void DirList::refresh() {
    QByteArray dir = m_path;
    while (!open(dir) && dir != "/")
        dir = NativePath::parentOf(dir);
}

void DirList::openRow(int row) {
    if (row < 0 || row >= m_model->rowCount())
        return;
    const DirListModel::Entry& entry = m_model->entry(row);
    if (!entry.usable) {
        MsgBox(QStringLiteral("The name of the directory ") + FileSystem::displayPath(entry.path) +
                   QStringLiteral(" is not valid text: the bytes shown as \\x and two digits "
                                  "cannot be written into a spec file.  Rename the directory to "
                                  "use it as a path."),
               MsgButtons::OK, MsgIcon::Exclamation, QStringLiteral("Directory Name Not Usable"));
        return;
    }
    const QByteArray path = entry.path;
    const Result<void> opened = open(path);
    if (!opened) {
        ShowErrorReport(opened.error(), QStringLiteral("Open Directory"));
        refresh(); // it may be gone: show what is there now
    }
}

void DirList::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        openRow(currentIndex().row());
        return;
    case Qt::Key_Backspace:
        if (m_model->currentRow() > 0)
            openRow(m_model->currentRow() - 1);
        return;
    default:
        QListView::keyPressEvent(event);
    }
}

} // namespace ondrel
