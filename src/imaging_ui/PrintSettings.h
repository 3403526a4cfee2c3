#pragma once

/// What the user chose for printing; read at launch. Main thread.
inline bool g_cropMarks = false; ///< draw marks where the paper is to be cut
inline int g_printLayout = 0;    ///< number of the layout
