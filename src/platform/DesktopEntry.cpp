#include "DesktopEntry.h"

#include "OpenFile.h"

#include <QHash>

namespace {

constexpr qint64 kMaxBytes = 1 << 20;

/// The keys of the group "Desktop Entry", those for single languages included under their bracketed names.
QHash<QString, QString> readKeys(const QByteArray &bytes)
{
    QHash<QString, QString> keys;
    bool inGroup = false;
    for (const QByteArray &rawLine : bytes.split('\n')) {
        const QString line = QString::fromUtf8(rawLine).trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inGroup = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (inGroup && equals > 0 && !line.startsWith(QLatin1Char('#')))
            keys.insert(line.left(equals).trimmed(), line.mid(equals + 1).trimmed());
    }
    return keys;
}

/// Undoes the escapes that every text value of an entry may hold.
QString unescaped(const QString &value)
{
    QString text;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value.at(i) != QLatin1Char('\\') || i + 1 == value.size()) {
            text += value.at(i);
            continue;
        }
        switch (const QChar next = value.at(++i); next.unicode()) {
        case 's':
            text += QLatin1Char(' ');
            break;
        case 'n':
            text += QLatin1Char('\n');
            break;
        case 't':
            text += QLatin1Char('\t');
            break;
        case 'r':
            text += QLatin1Char('\r');
            break;
        case '\\':
            text += next;
            break;
        default:
            text += QLatin1Char('\\');
            text += next;
        }
    }
    return text;
}

}

std::optional<DesktopEntry> DesktopEntry::read(const QString &path)
{
    const auto bytes = readWholeFile(path, kMaxBytes);
    if (!bytes)
        return {};
    const QHash<QString, QString> keys = readKeys(*bytes);
    DesktopEntry entry;
    entry.hidden = keys.value(QStringLiteral("Hidden")) == QLatin1String("true");
    if (entry.hidden)
        return entry;
    entry.command = parseExec(unescaped(keys.value(QStringLiteral("Exec"))));
    entry.workingFolder = unescaped(keys.value(QStringLiteral("Path")));
    if (keys.value(QStringLiteral("Type")) != QLatin1String("Application") || entry.command.isEmpty())
        return {};
    return entry;
}

namespace {

/// Splits a command line into its arguments.
class ExecParser
{
public:
    explicit ExecParser(const QString &exec)
        : m_exec(exec)
    {}

    QStringList parse()
    {
        for (m_at = 0; m_at < m_exec.size(); ++m_at) {
            const QChar character = m_exec.at(m_at);
            if (character == QLatin1Char('"'))
                toggleQuotes();
            else if (m_quoted && character == QLatin1Char('\\') && m_at + 1 < m_exec.size())
                m_argument += m_exec.at(++m_at);
            else if (!m_quoted && (character == QLatin1Char(' ') || character == QLatin1Char('\t')))
                endArgument();
            else if (character == QLatin1Char('%'))
                takeFieldCode();
            else
                m_argument += character;
        }
        endArgument();
        return m_quoted ? QStringList() : m_arguments;
    }

private:
    void toggleQuotes()
    {
        m_quoted = !m_quoted;
        m_isGiven = true;
    }
    /// Field codes stand for files, icons and names, of which there are none to hand over.
    void takeFieldCode()
    {
        ++m_at;
        if (m_at < m_exec.size() && m_exec.at(m_at) == QLatin1Char('%'))
            m_argument += QLatin1Char('%');
    }
    void endArgument()
    {
        if (m_isGiven || !m_argument.isEmpty())
            m_arguments.append(m_argument);
        m_argument.clear();
        m_isGiven = false;
    }

    const QString &m_exec;
    qsizetype m_at = 0;
    QString m_argument;
    QStringList m_arguments;
    bool m_quoted = false;
    bool m_isGiven = false; ///< by quotes, although it may be empty
};

}

QStringList DesktopEntry::parseExec(const QString &exec)
{
    return ExecParser(exec).parse();
}
