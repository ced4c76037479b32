orvane new-strategy my_first
cd my_first
cmake -B build
cmake --build build
ctest --test-dir build
orvane run run.json
