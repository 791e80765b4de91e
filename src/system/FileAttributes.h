// What a new file takes over from the file that it replaces.
#pragma once

#include <string>

#include <sys/stat.h>

namespace mapexport {

/// Gives the open file `to` the group and the owner of `old`, as far as this process may. Returns
/// what failed first and why, such as "its owner: Operation not permitted"; empty when nothing did.
/// Call it before the rights are set: a change of owner can take them away.
std::string TakeOwner(int to, const struct stat& old);

/// The rights (rwx for owner, group and others) for the open file `to` that replaces `old`: the
/// same ones; if `to` has a different group, the group gets no more rights than all others.
mode_t RightsLike(const struct stat& old, int to);

/// Gives the open file `to` the extended attributes of the file at `from`, including its access
/// control list, and removes a list that `to` inherited from its folder. Capabilities and
/// signatures are left out, as they belong to the old content. Returns as TakeOwner does. Call it
/// after the rights are set.
std::string TakeExtendedAttributes(int to, const std::string& from);

}  // namespace mapexport
