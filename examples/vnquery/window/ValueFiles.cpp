#include "vnquery/window/ValueFiles.h"

#include "vnquery/files/ValueLoader.h"
#include "vnquery/files/ValueSaver.h"
#include "vnquery/result/PictureKind.h"
#include "vnquery/window/Label.h"
#include "vnquery/window/RunTask.h"

#include <QFileDialog>

namespace vnquery {

namespace {

QString AllFiles() { return Label(IDS_VQ_ALL_FILES) + QStringLiteral(" (*)"); }

} // namespace

bool LoadValueFrom(QWidget* parent, ColumnKind kind, const std::string& column, Value& value) {
    const std::string file =
        QFileDialog::getOpenFileName(parent, PlainLabel(IDS_VQ_V_LOAD), {}, AllFiles())
            .toStdString();
    return !file.empty() && RunTask(parent, IDS_VQ_T_LOADING, [&](Progress& progress) {
        value = LoadValue(file, kind, column, progress);
    });
}

bool SaveValueTo(QWidget* parent, const Value& value, const std::string& column,
                 const std::string& cell) {
    const PictureKind kind = RecognisePicture(value);
    const bool isText = value.GetType() != Value::Type::Binary && kind == PictureKind::None;
    QString name = QString::fromStdString(column + (isText ? ".txt" : PictureExtension(kind)));
    name.replace(u'/', u'_');
    const std::string file =
        QFileDialog::getSaveFileName(parent, PlainLabel(IDS_VQ_V_SAVE), name, AllFiles())
            .toStdString();
    return !file.empty() && RunTask(parent, IDS_VQ_T_SAVING, [&](Progress& progress) {
        SaveValueBytes(value, cell, file, progress);
    });
}

} // namespace vnquery
