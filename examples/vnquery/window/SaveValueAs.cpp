#include "vnquery/window/SaveValueAs.h"

#include "vnquery/files/ValueSaver.h"
#include "vnquery/result/PictureKind.h"
#include "vnquery/window/TaskDialog.h"

namespace vnquery {

std::string SaveValueAs(CWnd* parent, const Value& value, const std::string& cell) {
    const bool isText = value.GetType() != Value::Type::Binary;
    const std::string extension =
        isText ? ".txt" : PictureExtension(RecognisePicture(value)); // with its dot
    const std::string filter = Text(IDS_VQ_ALL_FILES) + "|*.*||";
    CFileDialog dialog(FALSE, extension.c_str() + 1, nullptr,
                       OFN_HIDEREADONLY | OFN_OVERWRITEPROMPT, filter.c_str(), parent);
    if (dialog.DoModal() != IDOK)
        return {};
    const std::string file = ToString(dialog.GetPathName());
    const bool isSaved = RunTask(parent, IDS_VQ_T_SAVING, [&](Progress& progress) {
        SaveValueBytes(value, cell, file, progress);
    });
    return isSaved ? file : std::string();
}

} // namespace vnquery
