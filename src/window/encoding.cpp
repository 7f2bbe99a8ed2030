// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/encoding.h"

#include "base/encoding.h"

namespace vorpen {

QString toQString(std::string_view bytes) { return QString::fromStdString(toUtf8(bytes)); }

std::string fromQString(const QString& text) { return fromUtf8(text.toStdString()); }

}  // namespace vorpen
