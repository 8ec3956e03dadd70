#include "Models/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>
#include <nlohmann/json.hpp>

using namespace Qt::StringLiterals;
using nlohmann::ordered_json;

class UserDefaults::File
{
public:
    QString directory;
    ordered_json values = ordered_json::object();
    QString notice;

    QString path() const { return directory + u"/defaults.json"_s; }

    void load()
    {
        QFile file(path());
        if (!file.open(QIODevice::ReadOnly)) {
            return;
        }
        const QByteArray bytes = file.readAll();
        ordered_json read = ordered_json::parse(bytes.begin(), bytes.end(), nullptr, false);
        if (read.is_object()) {
            values = std::move(read);
        } else {
            file.rename(path() + u".damaged"_s);
            notice = u"The settings file was damaged and has been set aside as \"defaults.json.damaged\"."_s;
        }
    }

    bool save() const
    {
        QDir().mkpath(directory);
        QSaveFile file(path());
        if (!file.open(QIODevice::WriteOnly)) {
            return false;
        }
        const std::string text = values.dump();
        file.write(text.data(), static_cast<qint64>(text.size()));
        return file.commit();
    }

    const ordered_json *find(const QString &key) const
    {
        const auto it = values.find(key.toStdString());
        return it == values.end() ? nullptr : &*it;
    }

    bool set(const QString &key, ordered_json value)
    {
        values[key.toStdString()] = std::move(value);
        return save();
    }
};

UserDefaults::UserDefaults(const QString &directory, QObject *parent)
    : QObject(parent)
    , m_file(std::make_unique<File>())
{
    m_file->directory = directory;
    m_file->load();
}

UserDefaults::~UserDefaults() = default;

QString UserDefaults::defaultDirectory()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u"/tarnwell"_s;
}

QString UserDefaults::directory() const
{
    return m_file->directory;
}

std::optional<qint64> UserDefaults::integer(const QString &key) const
{
    const ordered_json *value = m_file->find(key);
    return value && value->is_number_integer() ? std::optional(value->get<qint64>()) : std::nullopt;
}

std::optional<bool> UserDefaults::boolean(const QString &key) const
{
    const ordered_json *value = m_file->find(key);
    return value && value->is_boolean() ? std::optional(value->get<bool>()) : std::nullopt;
}

std::optional<QString> UserDefaults::text(const QString &key) const
{
    const ordered_json *value = m_file->find(key);
    return value && value->is_string() ? std::optional(QString::fromStdString(value->get_ref<const std::string &>()))
                                       : std::nullopt;
}

std::optional<QByteArray> UserDefaults::data(const QString &key) const
{
    const ordered_json *value = m_file->find(key);
    if (!value || !value->is_object() || value->size() != 1 || !value->contains("data") ||
        !value->at("data").is_string()) {
        return std::nullopt;
    }
    return QByteArray::fromBase64(QByteArray::fromStdString(value->at("data").get_ref<const std::string &>()));
}

bool UserDefaults::contains(const QString &key) const
{
    return m_file->find(key) != nullptr;
}

QStringList UserDefaults::keys() const
{
    QStringList all;
    for (const auto &entry : m_file->values.items()) {
        all.append(QString::fromStdString(entry.key()));
    }
    return all;
}

bool UserDefaults::setInteger(const QString &key, qint64 value)
{
    return m_file->set(key, value);
}

bool UserDefaults::setBoolean(const QString &key, bool value)
{
    return m_file->set(key, value);
}

bool UserDefaults::setText(const QString &key, const QString &value)
{
    return m_file->set(key, value.toStdString());
}

bool UserDefaults::setData(const QString &key, const QByteArray &value)
{
    return m_file->set(key, ordered_json{{"data", value.toBase64().toStdString()}});
}

bool UserDefaults::remove(const QString &key)
{
    return !contains(key) || (m_file->values.erase(key.toStdString()), m_file->save());
}

QString UserDefaults::notice()
{
    return std::exchange(m_file->notice, {});
}
