#include "UserDefaults.h"

#include "StandardFolders.h"

#include <QSettings>

#include <cmath>

QString UserDefaults::standardPath()
{
    const QString folder = baseFolder("XDG_CONFIG_HOME", QStringLiteral(".config")).value_or(QString());
    return folder + QLatin1String("/Harrowmere/TamselPhoto.ini");
}

UserDefaults::UserDefaults(const QString &path)
    : m_settings(std::make_unique<QSettings>(path, QSettings::IniFormat))
{}

UserDefaults::~UserDefaults() = default;

bool UserDefaults::contains(const QString &key) const
{
    return m_settings->contains(key);
}

namespace {

QString keyOf(const char *key)
{
    return QString::fromUtf8(key);
}

/// The stored text; null when there is none. Lists, which QSettings makes of an unquoted comma, are no text.
QString storedText(const QSettings &settings, const char *key)
{
    const QVariant value = settings.value(keyOf(key));
    const int type = value.typeId();
    const bool plain =
        type == QMetaType::QString || type == QMetaType::Bool || type == QMetaType::Int || type == QMetaType::Double;
    return plain ? value.toString() : QString();
}

bool isOneOf(const QString &text, QLatin1String word, QLatin1String digit)
{
    return text.compare(word, Qt::CaseInsensitive) == 0 || text == digit;
}

}

bool UserDefaults::value(const Preference<bool> &preference) const
{
    const QString text = storedText(*m_settings, preference.key);
    if (isOneOf(text, QLatin1String("true"), QLatin1String("1")))
        return true;
    if (isOneOf(text, QLatin1String("false"), QLatin1String("0")))
        return false;
    return preference.fallback;
}

int UserDefaults::value(const Preference<int> &preference) const
{
    bool ok = false;
    const int number = storedText(*m_settings, preference.key).toInt(&ok);
    return ok ? number : preference.fallback;
}

double UserDefaults::value(const Preference<double> &preference) const
{
    bool ok = false;
    const double number = storedText(*m_settings, preference.key).toDouble(&ok);
    return ok && std::isfinite(number) ? number : preference.fallback;
}

QString UserDefaults::value(const Preference<const char *> &preference) const
{
    const QString text = storedText(*m_settings, preference.key);
    return text.isNull() ? QString::fromUtf8(preference.fallback) : text;
}

QByteArray UserDefaults::data(const QString &key) const
{
    const QVariant value = m_settings->value(key);
    return value.typeId() == QMetaType::QByteArray ? value.toByteArray() : QByteArray();
}

QVariantMap UserDefaults::dictionary(const QString &key) const
{
    const QVariant value = m_settings->value(key);
    return value.typeId() == QMetaType::QVariantMap ? value.toMap() : QVariantMap();
}

void UserDefaults::setValue(const Preference<bool> &preference, bool value)
{
    m_settings->setValue(keyOf(preference.key), value);
}

void UserDefaults::setValue(const Preference<int> &preference, int value)
{
    m_settings->setValue(keyOf(preference.key), value);
}

void UserDefaults::setValue(const Preference<double> &preference, double value)
{
    m_settings->setValue(keyOf(preference.key), value);
}

void UserDefaults::setValue(const Preference<const char *> &preference, const QString &value)
{
    // A null text would be stored as an invalid value, which reads back as never written.
    m_settings->setValue(keyOf(preference.key), value.isNull() ? QStringLiteral("") : value);
}

void UserDefaults::setData(const QString &key, const QByteArray &value)
{
    m_settings->setValue(key, value);
}

void UserDefaults::setDictionary(const QString &key, const QVariantMap &value)
{
    m_settings->setValue(key, value);
}

void UserDefaults::remove(const QString &key)
{
    m_settings->remove(key);
}

bool UserDefaults::synchronize()
{
    m_settings->sync();
    return m_settings->status() != QSettings::AccessError;
}
