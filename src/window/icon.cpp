// SPDX-License-Identifier: GPL-3.0-or-later
#include "window/icon.h"

#include <QtGui/QPixmap>

namespace vorpen {

QIcon programIcon() {
    QIcon icon;
    for (const auto bytes : iconPictures) {
        QPixmap picture;
        if (picture.loadFromData(bytes.data(), static_cast<uint>(bytes.size()), "PNG")) icon.addPixmap(picture);
    }
    return icon;
}

}  // namespace vorpen
