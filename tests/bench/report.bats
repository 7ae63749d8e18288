#!/usr/bin/env bats
# bench/report, with numbers that nobody had to measure.

setup() {
    results=$BATS_TEST_TMPDIR/results
    mkdir "$results"
    top=$BATS_TEST_DIRNAME/../..
    everything_held
}

# measured GROUP NAME TIME [COUNTER]: three repetitions, of which the middle one counts
measured() {
    local number
    for number in 1 "$3" 1000000; do
        printf '%s{"run_name": "%s/iterations:1/real_time", "run_type": "iteration", "real_time": %s, "time_unit": "us"%s}' \
            "${comma[$1]-}" "$2" "$number" "${4:+, $4}" >> "$results/$1.part"
        comma[$1]=,
    done
}

write_results() {
    local part
    for part in "$results"/*.part; do
        printf '{"context": {"date": "2026-11-20", "num_cpus": 2, "mhz_per_cpu": 2000}, "benchmarks": [%s, %s]}' "$(cat "$part")" \
            '{"run_name": "sum", "run_type": "aggregate", "real_time": 7, "cv": -NaN, "time_unit": "us"}' > "${part%.part}.json"
    done
    cp "$top/bench/instructions.kept" "$results/instructions"
}

everything_held() {
    declare -gA comma=()
    local size name
    for size in 20 256 1024; do
        for name in notification run/posix_spawn; do measured runs-$size $name 100; done
        for name in run/posix_spawn run/fork run/poco; do measured controls-$size $name 100; done
    done
    measured handler noChange 50 '"allocations": 0'
    measured handler lockAndUnlock 10
    for size in 1 10 100 1000 10000 100000 1000000; do measured events millionEvents/$size 100; done
    measured start start 110
    measured start startRuns 100
    measured memory heap 1 '"atRest": 3000, "growth": 0'
    for name in component sameLibraries pocoAlone; do measured load load/$name 100 '"loaded": 1000, "initialised": 2000'; done
    for name in unlock lock settings; do
        for who in bare adapter node; do measured doors $name/$who 100 '"finished": 0.0002'; done
    done
    for name in nothing sameSettings sameClosed sameOpen; do measured doors wholeRun/$name 100; done
    measured doors memory 100 '"resident": 1048576'
    echo 'armhf 409600' > "$results/size"
    for name in 100/1/0 100000/1/0 100/1000/0 100000/1000/0 100/1/999; do measured node commit/$name 100; done
}

report() { run "$top/bench/report" "$results"; }

# What a measurement was becomes another number, in all its repetitions.
becomes() { # GROUP NAME TIME
    sed -i -E "s|(\"$2/iterations:1/real_time\"[^}]*\"real_time\": )[0-9]+|\1$3|g" "$results/$1.part"
}

@test "rows within their goals are held, also at the very goal" {
    write_results
    report
    [ "$status" -eq 0 ]
    [[ $output == *"| held |"* ]]
    [[ $output != *missed* ]]
    [ ! -s "$results/missed" ]
}

@test "the median is compared, not the mean" {
    write_results
    report
    [[ $output == *"| 5 | \`start\` on an empty node | its four bare script runs | 1.10 |"* ]]
}

@test "a row beyond its goal is missed, by its group and name" {
    becomes doors lock/adapter 201
    becomes doors lock/node 201
    write_results
    report
    [ "$(cat "$results/missed")" = "doors: 8 \`vorma … lock\` until refused" ]
}

@test "the end of a run is compared with the end of the bare program, not with its visible effect" {
    sed -i -E 's|("lock/adapter/[^}]*"finished": )0.0002|\10.00031|g' "$results/doors.part"
    write_results
    report
    [[ $output == *"| 8 | the same until vorma has ended | as above, until the program has ended | 1.55 |"* ]]
    [ "$(cat "$results/missed")" = "doors: 8 the same until vorma has ended" ]
}

@test "sizes name the machine that they are of" {
    write_results
    report
    [[ $output == *"| 9c | vorma, stripped, armhf | none | 400 KiB |  | 1 | shown |"* ]]
    [[ $output == *"| 9c | resident memory of an \`unlock\`, on this machine | none | 1024 KiB |"* ]]
}

@test "one single allocation is missed" {
    sed -i '0,/"allocations": 0/s//"allocations": 1/' "$results/handler.part"
    write_results
    report
    [ "$(cat "$results/missed")" = 'handler: 3 its heap allocations' ]
}

@test "instructions are missed in both directions" {
    write_results
    for share in 97 103; do
        awk -v share=$share '{ print $1, int($2 * share / 100) }' "$top/bench/instructions.kept" > "$results/instructions"
        report
        [ "$(grep -c '^instructions: 12' "$results/missed")" -eq 2 ]
    done
}

@test "controls are shown and never missed" {
    becomes controls-1024 run/fork 900000
    write_results
    report
    [ ! -s "$results/missed" ]
    [[ $output == *"9000 | "* ]]
}

@test "what was not measured is named" {
    sed -i 's|lock/bare|else|g' "$results/doors.part"
    write_results
    report
    [ "$status" -ne 0 ]
    [[ $output == *"doors.json has no measurement 'unlock/bare'"* ]]
}
