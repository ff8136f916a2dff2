// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "hfmbase/infofactory.h"

#include <QFileInfo>

namespace hfmbase {

// The info of a local entry whose status was just read by a directory
// iterator. Follows the cache rules of InfoFactory::createInfo but never
// stats the file again.
FileInfoPointer createLocalEntryInfo(const QUrl &url, const QFileInfo &entry);

}   // namespace hfmbase
