#pragma once

#include <QFile>
#include <QString>

/// Sets a variable of the environment as long as it lives.
struct Variable
{
    Variable(const char *name, const QString &value)
        : m_name(name)
    {
        qputenv(name, QFile::encodeName(value));
    }
    ~Variable()
    {
        if (m_wasSet)
            qputenv(m_name, m_before);
        else
            qunsetenv(m_name);
    }
    Variable(const Variable &) = delete;
    Variable &operator=(const Variable &) = delete;

private:
    const char *m_name;
    bool m_wasSet = qEnvironmentVariableIsSet(m_name);
    QByteArray m_before = qgetenv(m_name);
};
