#pragma once

namespace rebate {

struct DataSource;

// Hears, on its thread, of each data source that a call opens: a login that the connection text itself names.
using SourceLoginListener = void (*)(const DataSource& source);

// The process's listener, null at the start, where the login is the host's alone.
void SetSourceLoginListener(SourceLoginListener listener);

// Tells the listener. Raises 5 where the source names rights and nobody would heed them.
void AnnounceSourceLogin(const DataSource& source);

}  // namespace rebate
