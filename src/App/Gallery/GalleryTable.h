#pragma once

#include "Views/Components/Table/RecordTableModel.h"

#include <QWidget>

class Theme;

/// An invented process, as rich in looks as a row can be.
struct GalleryRecord {
    QString pid;
    QString name;
    QString state;
    double cpu = 0;
    qint64 bytes = 0;
    QString command;
};

/// A table section of invented records: rows that are selected, busy, refused, gone and held.
class GalleryTable : public QWidget
{
    Q_OBJECT

public:
    explicit GalleryTable(const Theme &theme, QWidget *parent = nullptr);

    RecordTableModel<GalleryRecord> &model() { return m_model; }

private:
    RecordTableModel<GalleryRecord> m_model;
};
