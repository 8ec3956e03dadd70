#pragma once

#include "Models/DefaultsText.h"

#include <QByteArray>
#include <QObject>
#include <QSet>
#include <QString>
#include <QStringList>
#include <optional>
#include <sys/types.h>

/// A typed key and value store on one file, "defaults.json" in a directory of its own.
///
/// The file is a JSON object with its keys in the order of first writing. Integers, booleans and texts are JSON's
/// own; bytes are {"data":"<base64, RFC 4648 section 4>"}. Whatever else stands in it is kept as it is.
///
/// Each change is written at once: to a new file that is flushed and then takes the old one's place, so that a crash
/// or a full disk leaves the old file whole. A failed write keeps the value in memory, and the next change writes
/// both. What another program wrote into the file in between stays, except for the keys that are being written. Lives
/// on the main thread.
class UserDefaults : public QObject
{
    Q_OBJECT

public:
    /// Reads `directory`/defaults.json. Neither has to exist: they are made by the first write, with the modes 0700
    /// and 0600. A file that is no JSON object is set aside as "defaults.json.damaged" (then "-2" and so on). One
    /// that cannot be read is not written over as long as this object lives: each change fails.
    explicit UserDefaults(const QString &directory, QObject *parent = nullptr);

    /// Where an operator's settings are kept: "tarnwell" in the XDG configuration directory.
    static QString defaultDirectory();

    QString directory() const { return m_directory; }

    /// The value of `key`; nothing when it is absent or of another type.
    std::optional<qint64> integer(const QString &key) const { return value<qint64>(key); }

    std::optional<bool> boolean(const QString &key) const { return value<bool>(key); }

    std::optional<QString> text(const QString &key) const { return value<QString>(key); }

    std::optional<QByteArray> data(const QString &key) const { return value<QByteArray>(key); }

    /// Whether there is a value of any type.
    bool contains(const QString &key) const { return find(key) != nullptr; }

    QStringList keys() const;

    /// Sets a value, whatever type it had. False when the file could not be written.
    bool setInteger(const QString &key, qint64 value) { return set(key, value); }

    bool setBoolean(const QString &key, bool value) { return set(key, value); }

    bool setText(const QString &key, const QString &value) { return set(key, value); }

    bool setData(const QString &key, const QByteArray &value) { return set(key, value); }

    /// Forgets `key`. True when the file agrees, also when there was nothing to forget.
    bool remove(const QString &key);

    /// Copies the value of `key`, of any type, to "<key>.damaged", or with "-2", "-3" and so on behind that if other
    /// values are there. For who is about to replace a value that he could not use. True when the file has a copy.
    bool keepDamagedCopy(const QString &key);

    /// A sentence for the operator about what went wrong with the file, once: the next call gives an empty text until
    /// something else happens.
    QString notice();

Q_SIGNALS:
    /// notice() has something to tell.
    void noticeAvailable();

private:
    // Tells one state of the file from another.
    struct FileState {
        dev_t device = 0;
        ino_t inode = 0;
        qint64 size = -1;
        qint64 modifiedNs = 0;

        bool operator==(const FileState &) const = default;
    };

    template<class T>
    std::optional<T> value(const QString &key) const
    {
        const DefaultsEntry *entry = find(key);
        const T *held = entry ? std::get_if<T>(&entry->value) : nullptr;
        return held ? std::optional<T>(*held) : std::nullopt;
    }

    QString path() const;
    FileState fileState() const;
    const DefaultsEntry *find(const QString &key) const;
    bool set(const QString &key, DefaultsValue value);
    bool refresh();
    bool save();
    void tell(const QString &sentence);
    void tellFailure(const QString &sentence);
    static void put(QList<DefaultsEntry> &entries, const QString &key, DefaultsValue value);

    QString m_directory;
    QList<DefaultsEntry> m_entries;
    QSet<QString> m_unsaved; // keys that were set or removed since the file was last written
    FileState m_state;       // of the file that m_entries was last read from or written to
    QString m_notice;
    QString m_failure; // why the file could not be written the last time; told only when it changes
    const bool
        m_isFrozen; // what is in the file is not known, so nothing may take its place; last, as it is read then
};
