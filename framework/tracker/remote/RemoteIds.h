// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QUrl>

#include <optional>

/// Numbers for the resources of libraries on other machines, which give none: the same one for as long as the program
/// runs, and none that the own store gives. Any thread.
namespace RemoteIds {

/// The own store counts its resources up from 1.
constexpr int first = 1 << 30;
/// Numbers are given out until so many are; a row whose resource has none cannot be extended.
constexpr int most = 4'000'000;

struct Resource
{
    QUrl library;
    QByteArray iri;
};

constexpr bool isRemote(int id)
{
    return id >= first;
}
/// 0 when all numbers are given out.
int idOf(const QUrl &library, const QByteArray &iri);
std::optional<Resource> find(int id);

} // namespace RemoteIds
