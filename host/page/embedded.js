// What the command put into a page, and how to find things in it.

/** The JSON that stands in an element of the page. */
function embeddedJson(id) {
  return JSON.parse(document.getElementById(id).textContent);
}

/** The first place in an ascending array whose value is above `value`. */
function upperBound(array, value) {
  let from = 0;
  let to = array.length;
  while (from < to) {
    const middle = (from + to) >> 1;
    if (array[middle] <= value) from = middle + 1;
    else to = middle;
  }
  return from;
}
