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

std::string LoadValueFrom(QWidget* parent, ColumnKind kind, const std::string& column, Value& value,
                          std::string file) {
    if (file.empty())
        file = QFileDialog::getOpenFileName(parent, PlainLabel(IDS_VQ_V_LOAD), {}, AllFiles())
                   .toStdString();
    const auto load = [&](Progress& progress) { value = LoadValue(file, kind, column, progress); };
    return file.empty() || RunTask(parent, IDS_VQ_T_LOADING, load) ? file : std::string();
}

std::string SaveValueTo(QWidget* parent, const Value& value, const std::string& column,
                        const std::string& cell) {
    const PictureKind kind = RecognisePicture(value);
    const bool isText = value.GetType() != Value::Type::Binary && kind == PictureKind::None;
    QString name = QString::fromStdString(column + (isText ? ".txt" : PictureExtension(kind)));
    name.replace(u'/', u'_');
    const std::string file =
        QFileDialog::getSaveFileName(parent, PlainLabel(IDS_VQ_V_SAVE), name, AllFiles())
            .toStdString();
    const auto save = [&](Progress& progress) { SaveValueBytes(value, cell, file, progress); };
    return file.empty() || RunTask(parent, IDS_VQ_T_SAVING, save) ? file : std::string();
}

} // namespace vnquery
