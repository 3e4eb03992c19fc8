#pragma once

#include "app/MainWindowInterface.h"
#include "app/ScreenMetrics.h"

#include <QString>

#include <vector>

namespace ondrel {

// Everything the user can configure: the main window's placement and panes, the default
// directory, the user preferences and the default staging options. One instance lives as long as
// the program; it is kept between runs in the options file.
class clsOndrelApp {
public:
    // Sets every property to its default; the window is centred on screen, which is kept and asked
    // again by RestoreDefaults. programDirectory is where the options file lives.
    clsOndrelApp(const ScreenMetrics& screen, QString programDirectory);

    qint32 Top() const { return m_top; }
    void setTop(qint32 v) { m_top = v; }
    qint32 Left() const { return m_left; }
    void setLeft(qint32 v) { m_left = v; }
    qint32 Height() const { return m_height; }
    void setHeight(qint32 v) { m_height = v; }
    qint32 Width() const { return m_width; }
    void setWidth(qint32 v) { m_width = v; }
    bool ShowStageOpts() const { return m_showStageOpts; }
    void setShowStageOpts(bool v) { m_showStageOpts = v; }
    bool ShowToolbar() const { return m_showToolbar; }
    void setShowToolbar(bool v) { m_showToolbar = v; }
    bool ShowStatusBar() const { return m_showStatusBar; }
    void setShowStatusBar(bool v) { m_showStatusBar = v; }
    qint32 SplitterLoc() const { return m_splitterLoc; }
    void setSplitterLoc(qint32 v) { m_splitterLoc = v; }
    const QString& DefaultPath() const { return m_defaultPath; }
    void setDefaultPath(const QString& v) { m_defaultPath = v; }
    const QString& DefaultDrive() const { return m_defaultDrive; }
    void setDefaultDrive(const QString& v) { m_defaultDrive = v; }
    bool ShowConfirmMsgs() const { return m_showConfirmMsgs; }
    void setShowConfirmMsgs(bool v) { m_showConfirmMsgs = v; }
    bool SaveSettings() const { return m_saveSettings; }
    void setSaveSettings(bool v) { m_saveSettings = v; }
    qint16 Overwrite() const { return m_overwrite; }
    void setOverwrite(qint16 v) { m_overwrite = v; }
    bool CreateDirs() const { return m_createDirs; }
    void setCreateDirs(bool v) { m_createDirs = v; }
    bool CreateLog() const { return m_createLog; }
    void setCreateLog(bool v) { m_createLog = v; }
    bool ShowErrMsgs() const { return m_showErrMsgs; }
    void setShowErrMsgs(bool v) { m_showErrMsgs = v; }
    bool ResetArchive() const { return m_resetArchive; }
    void setResetArchive(bool v) { m_resetArchive = v; }
    bool DelSource() const { return m_delSource; }
    void setDelSource(bool v) { m_delSource = v; }
    bool InclArc() const { return m_inclArc; }
    void setInclArc(bool v) { m_inclArc = v; }
    bool InclHid() const { return m_inclHid; }
    void setInclHid(bool v) { m_inclHid = v; }
    bool InclRO() const { return m_inclRO; }
    void setInclRO(bool v) { m_inclRO = v; }
    bool InclSys() const { return m_inclSys; }
    void setInclSys(bool v) { m_inclSys = v; }

    const QString& programDirectory() const { return m_programDirectory; }
    // The options file, "ONDREL.OPT" in the program's directory.
    QString OptionsFile() const;

    // One value of an INI file, by the system's reading rule; a missing key reads as empty.
    QString ReadINIFile(const QString& Key, const QString& Section, const QString& FileName) const;
    // Loads the options file over the defaults. A value that does not convert is not caught:
    // its Error (13, or 6 for a number out of range) passes to the caller.
    void ReadOPTFile();
    // The same from another options file (the headless stager's --options).
    void ReadOPTFile(const QString& FileName);
    // Stores the settings in the options file; with SaveSettings off only that flag is written,
    // so what was saved before stays. Write failures are ignored.
    void WriteOPTFile() const;

    // Moves and sizes the main window to the stored placement and lays out its panes.
    void LocateMainScreen(MainWindowInterface& MainWindow) const;
    // Records the main window's placement and splitter position.
    void StoreLocSize(const MainWindowInterface& MainWindow);
    // Back to every default, the window state to normal and all three panes shown.
    void RestoreDefaults(MainWindowInterface& MainWindow);

private:
    struct OptionField;
    static const std::vector<OptionField>& optionFields();
    void setDefaults();

    ScreenMetrics m_screen;
    QString m_programDirectory;

    qint32 m_top = 0;
    qint32 m_left = 0;
    qint32 m_height = 0;
    qint32 m_width = 0;
    bool m_showStageOpts = true;
    bool m_showToolbar = true;
    bool m_showStatusBar = true;
    qint32 m_splitterLoc = 0;
    QString m_defaultPath;
    QString m_defaultDrive;
    bool m_showConfirmMsgs = true;
    bool m_saveSettings = false;
    qint16 m_overwrite = 0;
    bool m_createDirs = true;
    bool m_createLog = false;
    bool m_showErrMsgs = true;
    bool m_resetArchive = false;
    bool m_delSource = false;
    bool m_inclArc = true;
    bool m_inclHid = true;
    bool m_inclRO = true;
    bool m_inclSys = true;
};

} // namespace ondrel
