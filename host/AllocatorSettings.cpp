// How the allocator that is linked into the command deals with memory. It looks for this name.

extern "C" {

// What the data's text took is used again for orders, fills and curves, whichever thread makes them
// and however small they are: the first touch of new memory costs more than filling it.
// - One arena for two cores, so that what one thread frees is there for the others.
// - Memory that was freed stays with the process.
// - Small blocks may be cut from large ones.
[[gnu::visibility("default")]] const char* malloc_conf =
    "narenas_ratio:0.5,dirty_decay_ms:-1,oversize_threshold:0,lg_extent_max_active_fit:63";

}  // extern "C"
