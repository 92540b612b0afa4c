// The types of Qt that the window layer's interface is made of: the one public header that names
// any. A program that embeds a CWnd in its own Qt windows includes Qt's headers as well.
#pragma once

class QEventLoop;
class QMimeData;
class QWidget;

namespace vnbytstr {

using HostWidget = QWidget;       ///< what a window stands on, and what it can be put into
using HostDragData = QMimeData;   ///< what is dragged over a window
using HostEventLoop = QEventLoop; ///< what a modal dialog runs

} // namespace vnbytstr
