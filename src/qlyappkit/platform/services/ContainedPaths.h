#pragma once
// File names that come from documents (picture links, image names, names made from bookmarks) are
// only ever resolved inside the folder they are relative to: an absolute name, a name that climbs out
// with "..", or a symbolic link whose target lies outside is refused.
#include <QString>

#include <optional>

namespace qly {

/// The path of name inside folder, or nothing (and *problem, a short reason for the user) when the
/// name is empty, absolute, leaves the folder, or leads through a symbolic link to a place outside
/// it. A name that does not exist yet is resolved as far as its existing part goes, so the same check
/// serves files about to be written.
std::optional<QString> pathInsideFolder(const QString& folder, const QString& name, QString* problem = nullptr);

} // namespace qly
