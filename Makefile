# What a developer or a user types. Each target is one line that calls a script a person can read.

.PHONY: demo test build bench fuzz format lint clean

demo: ; @scripts/demo
test: ; @scripts/test
build: ; @scripts/build release
bench: ; @scripts/bench
fuzz: ; @scripts/fuzz
format: ; @scripts/format
lint: ; @scripts/lint
clean: ; rm -rf build
