// SPDX-License-Identifier: GPL-3.0-or-later
// A temporary folder of many small files for the listing benchmarks.
#pragma once

#include <QString>
#include <QtGlobal>

namespace nubixbench {

constexpr int kTreeFiles = 10000;

// Writes `count` files file-00000.txt, file-00001.txt, ... into the existing
// folder `dir`, file i holding i % 97 bytes. False when one cannot be written.
bool writeFiles(const QString &dir, int count);

// A folder of kTreeFiles such files, made on the first call and removed when
// the program ends; empty when it could not be made.
const QString &sharedTree();

// What a file view reads of every listed entry (name, size, modification
// time), summed so that the reads cannot be optimised away.
struct ListingTotals
{
    qint64 bytes = 0;
    qint64 newest = 0;
    int names = 0;

    template <class Info> void add(const Info &info)
    {
        names += info.fileName().size();
        bytes += info.size();
        newest = qMax(newest, info.lastModified().toMSecsSinceEpoch());
    }
};

}   // namespace nubixbench
