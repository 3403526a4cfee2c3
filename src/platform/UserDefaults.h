#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <memory>
#include <optional>

class QSettings;

/// One preference: the key under which it is stored and the value that holds while nothing is stored.
template<typename T>
struct Preference
{
    const char *key;
    T fallback;
};

/// The user's preferences in one INI file, keys verbatim. A key that was never written is told apart from false and 0;
/// a stored value that does not convert to the type asked for counts as never written.
class UserDefaults
{
public:
    /// The file of this application in the user's configuration folder.
    [[nodiscard]] static QString standardPath();

    explicit UserDefaults(const QString &path);
    ~UserDefaults();
    UserDefaults(const UserDefaults &) = delete;
    UserDefaults &operator=(const UserDefaults &) = delete;

    [[nodiscard]] bool contains(const QString &key) const;
    [[nodiscard]] bool value(const Preference<bool> &preference) const;
    [[nodiscard]] int value(const Preference<int> &preference) const;
    [[nodiscard]] double value(const Preference<double> &preference) const;
    [[nodiscard]] QString value(const Preference<const char *> &preference) const;
    /// Raw bytes, such as window geometry; empty when absent.
    [[nodiscard]] QByteArray data(const QString &key) const;
    /// A dictionary; empty when absent.
    [[nodiscard]] QVariantMap dictionary(const QString &key) const;

    void setValue(const Preference<bool> &preference, bool value);
    void setValue(const Preference<int> &preference, int value);
    void setValue(const Preference<double> &preference, double value);
    void setValue(const Preference<const char *> &preference, const QString &value);
    void setData(const QString &key, const QByteArray &value);
    void setDictionary(const QString &key, const QVariantMap &value);
    void remove(const QString &key);
    /// Writes what changed; false when the file could not be written.
    bool synchronize();

private:
    std::unique_ptr<QSettings> m_settings;
};
