#pragma once

namespace orvane {

class ThreadPoolBase;

/// The pool that serves all runners of the process: delivery is serial by runner and parallel
/// across runners. Made on first use, never destroyed.
ThreadPoolBase* runnerThreadPool();

}  // namespace orvane
