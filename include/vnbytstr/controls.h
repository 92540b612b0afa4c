// Everything of the library that needs a window (vnbytstr::controls).
#pragma once

#include "vnbytstr/DataTip.h"
#include "vnbytstr/EditEx.h"
#include "vnbytstr/LanguageCombo.h"
#include "vnbytstr/ListBoxCellEdit.h"
#include "vnbytstr/ListBoxEx.h"
#include "vnbytstr/ListBoxExHeadings.h"
#include "vnbytstr/ListColumn.h"
#include "vnbytstr/ListDropTarget.h"
#include "vnbytstr/ListFilterRow.h"
#include "vnbytstr/ListMessages.h"
#include "vnbytstr/ListParts.h"
#include "vnbytstr/ListRowSource.h"
#include "vnbytstr/RowFilter.h"
#include "vnbytstr/VNListBox.h"
#include "vnbytstr/Window.h"
#include "vnbytstr/ZoomDialog.h"
