// readme_to_man TEMPLATE README USAGE VERSION DATE OUTPUT: writes a manual page from its roff
// template, so that the page and the README never drift apart. In the template, a line
//   @README Section name@  becomes that "## " section of the README, turned into roff;
//   @USAGE OPTIONS@        becomes the option list of a program's --help text (USAGE, a file);
// and @VERSION@ and @DATE@ are replaced wherever they stand. The README is read as the small
// part of Markdown it uses: paragraphs, tables, fenced code, "### " headings, "- " lists,
// `code` and **bold**.
#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <cstdio>
#include <optional>

namespace {

std::optional<QString> readText(const QString& fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return QString::fromUtf8(file.readAll());
}

// Text as roff takes it: backslashes escaped, the few non-ASCII characters the README uses by
// their roff names, and a line never starting with a control character.
QString escaped(QString text) {
    text.replace(u'\\', QStringLiteral("\\e"));
    text.replace(QChar(0x2014), QStringLiteral("\\(em"));
    text.replace(QChar(0x2013), QStringLiteral("\\(en"));
    text.replace(QChar(0x2026), QStringLiteral("\\&..."));
    text.replace(QChar(0x00D7), QStringLiteral("\\(mu"));
    return text;
}

QString literal(const QString& text) {
    return escaped(text).replace(u'-', QStringLiteral("\\-"));
}

// `code` and **bold** in bold, the rest as it stands.
QString inlineText(const QString& text) {
    static const QRegularExpression marks(QStringLiteral("`([^`]*)`|\\*\\*([^*]*)\\*\\*"));
    QString out;
    qsizetype at = 0;
    for (auto it = marks.globalMatch(text); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        out += escaped(text.mid(at, match.capturedStart() - at));
        const bool code = match.capturedLength(1) > 0;
        // A literal (a path, a key) is never hyphenated.
        out += QStringLiteral("\\fB") +
               (code ? QStringLiteral("\\%") + literal(match.captured(1))
                     : inlineText(match.captured(2))) +
               QStringLiteral("\\fR");
        at = match.capturedEnd();
    }
    return out + escaped(text.mid(at));
}

QString line(const QString& text) {
    return (text.startsWith(u'.') || text.startsWith(u'\'') ? QStringLiteral("\\&") : QString()) +
           text + u'\n';
}

QStringList cells(const QString& row) {
    QStringList parts = row.trimmed().split(u'|');
    parts = parts.mid(1, parts.size() - 2);
    for (QString& part : parts)
        part = part.trimmed();
    return parts;
}

// One table: a tagged paragraph per row, tagged with its first cell, the other cells below it
// under their column's heading.
QString table(const QStringList& rows) {
    const QStringList headings = cells(rows.value(0));
    QString out;
    for (const QString& row : rows.mid(2)) {
        const QStringList values = cells(row);
        out += QStringLiteral(".TP\n") + line(inlineText(values.value(0)));
        for (qsizetype column = 1; column < values.size(); ++column) {
            if (column > 1)
                out += QStringLiteral(".br\n");
            out += line(inlineText(headings.value(column)) + QStringLiteral(": ") +
                        inlineText(values[column]));
        }
    }
    return out;
}

// A new paragraph, unless it is the first of its section, which starts one already.
QString paragraph(const QString& sectionSoFar) {
    return sectionSoFar.isEmpty() ? QString() : QStringLiteral(".PP\n");
}

std::optional<QString> readmeSection(const QString& readme, const QString& name) {
    const QStringList lines = readme.split(u'\n');
    const qsizetype start = lines.indexOf(QStringLiteral("## ") + name);
    if (start < 0)
        return std::nullopt;
    QString out;
    QStringList tableRows;
    bool inCode = false;
    bool inParagraph = false;
    for (qsizetype i = start + 1; i < lines.size() && !lines[i].startsWith(QStringLiteral("## "));
         ++i) {
        const QString text = lines[i];
        if (text.startsWith(QStringLiteral("```"))) {
            out += inCode ? QStringLiteral(".fi\n.RE\n")
                          : paragraph(out) + QStringLiteral(".RS 4\n.nf\n");
            inCode = !inCode;
            inParagraph = false;
            continue;
        }
        if (inCode) {
            out += line(literal(text));
            continue;
        }
        if (text.startsWith(u'|')) {
            tableRows << text;
            continue;
        }
        if (!tableRows.isEmpty()) {
            out += table(tableRows);
            tableRows.clear();
        }
        if (text.trimmed().isEmpty()) {
            inParagraph = false;
        } else if (text.startsWith(QStringLiteral("### "))) {
            out += QStringLiteral(".SS ") + inlineText(text.mid(4)) + u'\n';
            inParagraph = false;
        } else if (text.startsWith(QStringLiteral("- "))) {
            out += QStringLiteral(".IP \\(bu 2\n") + line(inlineText(text.mid(2)));
            inParagraph = true;
        } else {
            if (!inParagraph)
                out += paragraph(out);
            out += line(inlineText(text.trimmed()));
            inParagraph = true;
        }
    }
    if (!tableRows.isEmpty())
        out += table(tableRows);
    return out;
}

// The option list of a --help text: the block after the first empty line, one option per line
// that starts with "  -", its description after two blanks and on the lines below.
QString usageOptions(const QString& usage) {
    const QStringList lines = usage.split(u'\n');
    qsizetype i = lines.indexOf(QString()) + 1;
    QString out;
    static const QRegularExpression option(QStringLiteral("^  (-\\S*)(( \\S+)*)( {2,}(.*))?$"));
    for (; i > 0 && i < lines.size() && !lines[i].isEmpty(); ++i) {
        const QRegularExpressionMatch match = option.match(lines[i]);
        if (match.hasMatch()) {
            QString name = match.captured(1);
            QString argument = match.captured(2).trimmed();
            const qsizetype equals = name.indexOf(u'=');
            if (equals > 0) {
                argument = name.mid(equals) + argument;
                name.truncate(equals);
            }
            out += QStringLiteral(".TP\n\\fB") + literal(name) + QStringLiteral("\\fR");
            if (!argument.isEmpty())
                out += (argument.startsWith(u'=') ? QString() : QStringLiteral(" ")) +
                       QStringLiteral("\\fI") + literal(argument) + QStringLiteral("\\fR");
            out += u'\n';
            if (!match.captured(5).isEmpty())
                out += line(escaped(match.captured(5)));
        } else {
            out += line(escaped(lines[i].trimmed()));
        }
    }
    return out;
}

} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() != 7) {
        std::fputs("usage: readme_to_man TEMPLATE README USAGE VERSION DATE OUTPUT\n", stderr);
        return 64;
    }
    const std::optional<QString> manTemplate = readText(arguments[1]);
    const std::optional<QString> readme = readText(arguments[2]);
    const std::optional<QString> usage = readText(arguments[3]);
    if (!manTemplate || !readme || !usage) {
        std::fputs("readme_to_man: cannot read the template, the README or the usage\n", stderr);
        return 1;
    }
    QString page;
    static const QRegularExpression placeholder(QStringLiteral("^@(README|USAGE) (.+)@$"));
    for (const QString& text : manTemplate->split(u'\n')) {
        const QRegularExpressionMatch match = placeholder.match(text);
        if (!match.hasMatch()) {
            page += QString(text)
                        .replace(QStringLiteral("@VERSION@"), arguments[4])
                        .replace(QStringLiteral("@DATE@"), arguments[5]) +
                    u'\n';
            continue;
        }
        const std::optional<QString> part = match.captured(1) == QLatin1String("USAGE")
                                                ? std::optional<QString>(usageOptions(*usage))
                                                : readmeSection(*readme, match.captured(2));
        if (!part) {
            std::fprintf(stderr, "readme_to_man: no section \"%s\" in %s\n",
                         qPrintable(match.captured(2)), qPrintable(arguments[2]));
            return 1;
        }
        page += *part;
    }
    page.chop(1);
    if (const qsizetype odd = page.indexOf(QRegularExpression(QStringLiteral("[^\\x{0}-\\x{7f}]")));
        odd >= 0) {
        std::fprintf(stderr, "readme_to_man: a character roff may not show: %s\n",
                     qPrintable(page.mid(odd, 20)));
        return 1;
    }
    QFile out(arguments[6]);
    if (!out.open(QIODevice::WriteOnly) || out.write(page.toUtf8()) < 0) {
        std::fprintf(stderr, "readme_to_man: cannot write %s\n", qPrintable(arguments[6]));
        return 1;
    }
    return 0;
}
