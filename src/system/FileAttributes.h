// What a new file takes over from the file that it replaces.
#pragma once

#include <string>

#include <sys/stat.h>

namespace mapexport {

/// Gives the open file `to` the group and the owner of `old`, as far as this process may. Returns
/// the first thing that it could not have and why, such as "its owner: Operation not permitted";
/// empty when it has both. To be called before the rights are set, which a change of owner can take
/// away.
std::string TakeOwner(int to, const struct stat& old);

/// The rights (rwx for owner, group and others) for a file that replaces `old`: the same, but where
/// it has another group, that group gets no more than all others have.
mode_t RightsLike(const struct stat& old, int to);

/// Gives the open file `to` the extended attributes of the file at `from`, among them its access
/// control list, and takes away a list that `to` inherited from its folder. What belongs to the old
/// content, capabilities and signatures, is left out. Returns as TakeOwner does; to be called after
/// the rights are set.
std::string TakeExtendedAttributes(int to, const std::string& from);

}  // namespace mapexport
