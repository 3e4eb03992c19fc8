#include "app/clsOndrelApp.h"

#include "app/Module1.h"
#include "app/ProgramDirectory.h"
#include "platform/Convert.h"
#include "platform/ProfileFile.h"

#include <cmath>
#include <variant>

namespace ondrel {

namespace {

const QString kSection = QStringLiteral("FSOptions");

constexpr qint32 kDefaultHeight = 5505;
constexpr qint32 kDefaultWidth = 7005;
constexpr qint32 kDefaultSplitterLoc = 3400;

qint32 roundTwips(double v) {
    return static_cast<qint32>(std::nearbyint(v));
}

} // namespace

// One key of the options file and the property it holds; the table's order is the file's order.
struct clsOndrelApp::OptionField {
    QString key;
    std::variant<qint32 clsOndrelApp::*, qint16 clsOndrelApp::*, bool clsOndrelApp::*,
                 QString clsOndrelApp::*>
        member;
};

const std::vector<clsOndrelApp::OptionField>& clsOndrelApp::optionFields() {
    static const std::vector<OptionField> fields = {
        {QStringLiteral("Top"), &clsOndrelApp::m_top},
        {QStringLiteral("Left"), &clsOndrelApp::m_left},
        {QStringLiteral("Height"), &clsOndrelApp::m_height},
        {QStringLiteral("Width"), &clsOndrelApp::m_width},
        {QStringLiteral("ShowStageOpts"), &clsOndrelApp::m_showStageOpts},
        // The file spells this key with a capital B, unlike the property.
        {QStringLiteral("ShowToolBar"), &clsOndrelApp::m_showToolbar},
        {QStringLiteral("ShowStatusBar"), &clsOndrelApp::m_showStatusBar},
        {QStringLiteral("SplitterLoc"), &clsOndrelApp::m_splitterLoc},
        {QStringLiteral("DefaultPath"), &clsOndrelApp::m_defaultPath},
        {QStringLiteral("DefaultDrive"), &clsOndrelApp::m_defaultDrive},
        {QStringLiteral("ShowConfirmMsgs"), &clsOndrelApp::m_showConfirmMsgs},
        {QStringLiteral("SaveSettings"), &clsOndrelApp::m_saveSettings},
        {QStringLiteral("Overwrite"), &clsOndrelApp::m_overwrite},
        {QStringLiteral("CreateDirs"), &clsOndrelApp::m_createDirs},
        {QStringLiteral("CreateLog"), &clsOndrelApp::m_createLog},
        {QStringLiteral("ShowErrMsgs"), &clsOndrelApp::m_showErrMsgs},
        {QStringLiteral("ResetArchive"), &clsOndrelApp::m_resetArchive},
        {QStringLiteral("DelSource"), &clsOndrelApp::m_delSource},
        {QStringLiteral("InclArc"), &clsOndrelApp::m_inclArc},
        {QStringLiteral("InclHid"), &clsOndrelApp::m_inclHid},
        {QStringLiteral("InclRO"), &clsOndrelApp::m_inclRO},
        {QStringLiteral("InclSys"), &clsOndrelApp::m_inclSys},
    };
    return fields;
}

clsOndrelApp::clsOndrelApp(const ScreenMetrics& screen, QString programDirectory)
    : m_screen(screen), m_programDirectory(std::move(programDirectory)) {
    setDefaults();
}

void clsOndrelApp::setDefaults() {
    // Centred: half the screen less half the window, each halved with a truncating division.
    m_top = m_screen.heightTwips() / 2 - kDefaultHeight / 2;
    m_left = m_screen.widthTwips() / 2 - kDefaultWidth / 2;
    m_height = kDefaultHeight;
    m_width = kDefaultWidth;
    m_showStageOpts = true;
    m_showToolbar = true;
    m_showStatusBar = true;
    m_splitterLoc = kDefaultSplitterLoc;
    // The root of the file system stands where a drive root would.
    m_defaultPath = QStringLiteral("/");
    m_defaultDrive = QStringLiteral("/");
    m_showConfirmMsgs = true;
    m_saveSettings = false;
    m_overwrite = OverwriteMode::IfOlder;
    m_createDirs = true;
    m_createLog = false;
    m_showErrMsgs = true;
    m_resetArchive = false;
    m_delSource = false;
    m_inclArc = true;
    m_inclHid = true;
    m_inclRO = true;
    m_inclSys = true;
}

QString clsOndrelApp::OptionsFile() const {
    return OptionsFileName(m_programDirectory);
}

QString clsOndrelApp::ReadINIFile(const QString& Key, const QString& Section,
                                  const QString& FileName) const {
    const Result<ProfileFile> file = ProfileFile::read(FileName);
    return file.ok() ? ReadProfileValue(file.value(), Section, Key) : QString();
}

void clsOndrelApp::ReadOPTFile() {
    ReadOPTFile(OptionsFile());
}

void clsOndrelApp::ReadOPTFile(const QString& FileName) {
    // An options file that cannot be read gives no values, like a missing one: the defaults stay.
    const Result<ProfileFile> read = ProfileFile::read(FileName);
    const ProfileFile file = read.ok() ? read.value() : ProfileFile();
    for (const OptionField& field : optionFields()) {
        const QString text = ReadProfileValue(file, kSection, field.key);
        if (text.isEmpty())
            continue;
        try {
            std::visit(
                [&](auto member) {
                    using T = std::remove_reference_t<decltype(this->*member)>;
                    if constexpr (std::is_same_v<T, qint32>)
                        this->*member = Convert::toLong(text).valueOrThrow();
                    else if constexpr (std::is_same_v<T, qint16>)
                        this->*member = Convert::toInteger(text).valueOrThrow();
                    else if constexpr (std::is_same_v<T, bool>)
                        this->*member = Convert::toBoolean(text).valueOrThrow();
                    else
                        this->*member = text;
                },
                field.member);
        } catch (const Error& error) {
            // The error passes on with its number and description; its source names the line
            // that would not convert, so whoever reports it can say which one to mend.
            throw Error(error.number(), error.description(), field.key + QLatin1Char('=') + text);
        }
    }
}

void clsOndrelApp::WriteOPTFile() const {
    const Result<ProfileFile> read = ProfileFile::read(OptionsFile());
    if (!read.ok())
        return;
    ProfileFile file = read.value();
    if (!m_saveSettings) {
        file.writeString(kSection, QStringLiteral("SaveSettings"), Convert::booleanText(false));
    } else {
        for (const OptionField& field : optionFields()) {
            std::visit(
                [&](auto member) {
                    using T = std::remove_cvref_t<decltype(this->*member)>;
                    if constexpr (std::is_same_v<T, bool>)
                        file.writeString(kSection, field.key, Convert::booleanText(this->*member));
                    else if constexpr (std::is_same_v<T, QString>)
                        file.writeString(kSection, field.key, this->*member);
                    else
                        file.writeString(kSection, field.key, QString::number(this->*member));
                },
                field.member);
        }
    }
    (void)file.write(OptionsFile());
}

void clsOndrelApp::LocateMainScreen(MainWindowInterface& MainWindow) const {
    MainWindow.setTop(m_top);
    MainWindow.setLeft(m_left);
    bFormLoaded = false;
    MainWindow.setHeight(m_height);
    MainWindow.setWidth(m_width);
    bFormLoaded = true;
    MainWindow.SizeControls(m_splitterLoc);
}

void clsOndrelApp::StoreLocSize(const MainWindowInterface& MainWindow) {
    m_top = roundTwips(MainWindow.Top());
    m_left = roundTwips(MainWindow.Left());
    m_height = roundTwips(MainWindow.Height());
    m_width = roundTwips(MainWindow.Width());
    m_splitterLoc = roundTwips(MainWindow.splitterLeft());
}

void clsOndrelApp::RestoreDefaults(MainWindowInterface& MainWindow) {
    setDefaults();
    MainWindow.setWindowState(WindowState::Normal);
    if (!MainWindow.toolbarVisible())
        MainWindow.ShowToolbar();
    if (!MainWindow.statusBarVisible())
        MainWindow.ShowStatusBar();
    if (!MainWindow.stageOptsVisible())
        MainWindow.ShowStageOpts();
}

} // namespace ondrel
