// The update check: one look at the product's download page. Has its own use of libcurl, apart from the
// wallet's HTTP client.
#pragma once

// The version that the page announces, -1 for any failure. Blocks on the network.
int fetch_latest_version();
