// Names for temporary files.
#pragma once

#include "vnbytstr/framework/String.h"

/// Puts a name that no file has into `out`: "<folder>~<prefix>-<process id>-<counter>.<extension>",
/// in the temporary folder (TMPDIR, else /var/tmp). A null prefix or extension is "tmp". The
/// counter is the process's own, counts every attempt and is safe across threads, so no two calls
/// of a process give the same name. The name is not reserved: make the file with
/// CFile::modeExclusive and ask again when it was taken meanwhile.
VNBYTSTR_API void GenerateTempFileName(CString& out, const char* prefix, const char* extension);

/// GenerateTempFileName(out, null, "lob"): a name such as /var/tmp/~tmp-1234-0.lob.
VNBYTSTR_API void GenerateLOBFileName(CString& out);

/// Puts the temporary folder's name, with its trailing slash, into `out`.
VNBYTSTR_API void GetTemporaryPath(CString& out);
