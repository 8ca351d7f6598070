#pragma once
// Text for fixed-pitch columns: cut or padded to a width, or broken into
// lines of a width, counted in characters.

#include <QString>

namespace veltrako::print {

// `text` cut to `width` characters, or padded with blanks to that width.
// A width below 1 gives an empty text.
QString pad_to(const QString& text, int width);

// `text` in pieces of `width` characters. Every piece that more text follows
// is ended by CR LF and `indent` blanks; the last piece is padded with blanks
// to `width`. A width below 1 leaves the text as it is.
QString wrap_fixed(const QString& text, int width, int indent);

} // namespace veltrako::print
