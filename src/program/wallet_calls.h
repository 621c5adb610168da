// The wallet library behind a round.
#pragma once

#include "core/round_wallet.h"

RoundWallet library_wallet();
