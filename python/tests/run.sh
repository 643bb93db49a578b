#!/bin/sh
# The tests of the Python package over one library: run.sh LIBRARY [pytest option...]. Status 77
# where there is no Python with NumPy and pytest for it. KEF_TEST_MEMBER: that member beside it.
set -eu
library=$1
shift
if [ -n "${KEF_TEST_MEMBER:-}" ]; then
    library=$(dirname "$(dirname "$library")")/$KEF_TEST_MEMBER/${library##*/}
fi
cd "$(dirname "$0")/.."
for python in ${KEF_PYTHON:-python3 /usr/bin/python3}; do
    if "$python" -c 'import numpy, pytest' 2>/dev/null; then
        KEF_LIBRARY=$library PYTHONPATH=$PWD PYTHONDONTWRITEBYTECODE=1 \
            exec "$python" -m pytest -q -p no:cacheprovider tests "$@"
    fi
done
echo "skipped: python3-numpy or python3-pytest is not installed"
exit 77
