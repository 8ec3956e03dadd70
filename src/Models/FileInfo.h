#pragma once

#include "Models/RawText.h"
#include "Models/RecordId.h"

#include <QString>

/// One entry of a remote directory, as listed by the server.
struct FileInfo {
    QUuid id = RecordId::fresh();
    QString name;
    QString path;
    QString size;
    QString permissions;
    QString lastModified;
    QString owner;
    QString group;
    bool isDirectory = false;

    /// The size as shown: "--" for a directory, "48.2 MB" for a byte count, other text unchanged.
    QString displaySize() const;

    /// The symbol that stands for the entry: "folder.fill", "doc.text.fill", "terminal.fill", "gear" or "doc.fill",
    /// by the name's suffix in its exact case.
    QString icon() const;

    bool operator==(const FileInfo &) const = default;
};

size_t qHash(const FileInfo &record, size_t seed = 0);

enum class FileSortOrder {
    NameAscending,
    NameDescending,
    SizeAscending,
    SizeDescending,
    DateAscending,
    DateDescending
};

/// The raw texts are what the sort menu shows.
template<>
struct RawTexts<FileSortOrder> {
    static constexpr std::array all{std::pair{FileSortOrder::NameAscending, QStringView(u"Name ↑")},
                                    std::pair{FileSortOrder::NameDescending, QStringView(u"Name ↓")},
                                    std::pair{FileSortOrder::SizeAscending, QStringView(u"Size ↑")},
                                    std::pair{FileSortOrder::SizeDescending, QStringView(u"Size ↓")},
                                    std::pair{FileSortOrder::DateAscending, QStringView(u"Date ↑")},
                                    std::pair{FileSortOrder::DateDescending, QStringView(u"Date ↓")}};
};
