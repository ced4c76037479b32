// The sweep's data as the command put it into the page.

const sweep = embeddedJson('data');
// A sweep's times are shown in UTC.
const run = { zone: [[-8.64e15, 0]] };

/** Rows come as arrays: see SweepPage.cpp. */
function sweepRow([window, number, rank, places, status, message, figures]) {
  const isGood = status === 'Stopped' || status === 'Finished';
  return { window, number, rank, places, status, message, figures, isGood };
}

sweep.rows = sweep.rows.map(sweepRow);
sweep.outOfSample = sweep.outOfSample.map(sweepRow);
const isWalk = sweep.windows.length > 0;
