// The picture of a card: within it, or in a file of the service, which keeps
// pictures beside its book and names them in the card.

#pragma once

#include <optional>
#include <string>

#include "platform/linux/eds/card.h"

namespace varnok {

// Whether there is one that photoOf() would give.
bool hasPhoto(const Card& card);

// Its bytes as they are stored. Nothing for one that lies elsewhere in the
// network, or whose file is gone. A file outside the service's own folder counts
// only when it is a JPEG or PNG picture: a card from a stranger may name any.
std::optional<std::string> photoOf(const Card& card);

// Replaces the picture; nothing, or no bytes, takes it away.
void setPhoto(Card& card, const std::optional<std::string>& bytes);

}  // namespace varnok
