// The wallet library's front door: the one header that an application includes.
#pragma once

#include "base/sinks.h"
#include "clasp/connect.h"
#include "clasp/status_record.h"
#include "clasp/status_report.h"
#include "index/holder_board.h"
#include "index/holder_snapshot.h"
#include "index/token_list.h"
#include "index/token_row.h"
#include "net/http_client.h"
#include "spend/balance.h"
#include "spend/send.h"
#include "wallet/binds.h"
#include "wallet/data_root.h"
#include "wallet/wallet_document.h"
