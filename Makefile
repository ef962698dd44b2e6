# What a developer or a user types. Each target is one line that calls a script a person can read.

.PHONY: demo test test-report build package check-clang bench conventions fuzz format lint clean

demo: ; @scripts/demo
test: ; @scripts/test
test-report: ; @scripts/test_report
build: ; @scripts/build release
package: ; @scripts/package
check-clang: ; @scripts/check_clang
bench: ; @scripts/bench
conventions: ; @scripts/check_conventions
fuzz: ; @scripts/fuzz
format: ; @scripts/format
lint: ; @scripts/lint
clean: ; rm -rf build
