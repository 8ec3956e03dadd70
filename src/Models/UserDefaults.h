#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <memory>
#include <optional>

/// A typed key and value store on one file, "defaults.json" in a directory of its own.
///
/// The file is a JSON object with its keys in the order of first writing. Integers, booleans and texts are JSON's
/// own; bytes are {"data":"<base64, RFC 4648 section 4>"}. Whatever else stands in it is kept as it is.
///
/// Each change is written at once: to a new file that is flushed and then takes the old one's place, so that a crash
/// or a full disk leaves the old file whole. A failed write keeps the value in memory and the next change tries
/// again. Lives on the main thread.
class UserDefaults : public QObject
{
    Q_OBJECT

public:
    /// Reads `directory`/defaults.json. Neither has to exist: they are made by the first write, with the modes 0700
    /// and 0600. A file that is no JSON object is moved aside as "defaults.json.damaged" (then "-2" and so on). One
    /// that cannot be read is never written over.
    explicit UserDefaults(const QString &directory, QObject *parent = nullptr);
    ~UserDefaults() override;

    /// Where an operator's settings are kept: "tarnwell" in the XDG configuration directory.
    static QString defaultDirectory();

    QString directory() const;

    /// The value of `key`; nothing when it is absent or of another type.
    std::optional<qint64> integer(const QString &key) const;
    std::optional<bool> boolean(const QString &key) const;
    std::optional<QString> text(const QString &key) const;
    std::optional<QByteArray> data(const QString &key) const;

    bool contains(const QString &key) const;
    QStringList keys() const;

    /// Sets a value, whatever type it had. False when the file could not be written; the value holds in memory then.
    bool setInteger(const QString &key, qint64 value);
    bool setBoolean(const QString &key, bool value);
    bool setText(const QString &key, const QString &value);
    bool setData(const QString &key, const QByteArray &value);

    /// Forgets `key`. True when the file agrees, also when there was nothing to forget.
    bool remove(const QString &key);

    /// A sentence for the operator about what went wrong with the file, once: the next call gives an empty text until
    /// something else happens.
    QString notice();

Q_SIGNALS:
    /// notice() has something to tell.
    void noticeAvailable();

private:
    class File;
    std::unique_ptr<File> m_file;
};
