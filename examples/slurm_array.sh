#!/bin/bash
# An array job of Slurm: each task takes one clip of a list, a name a line.
#   sbatch --array=1-$(wc -l <clips.txt) slurm_array.sh clips.txt done
# Submit the numbers of tasks that failed again: --array=3,17.
#SBATCH --job-name=vidproc
#SBATCH --cpus-per-task=2
#SBATCH --mem=1G
#SBATCH --output=vidproc-%A-%a.log

set -euo pipefail
list=$1 results=$2
clip=$(sed -n "${SLURM_ARRAY_TASK_ID}p" "$list")
name=$(basename "$clip")

mkdir -p "$results"
vidproc pre --quiet "$clip" --size 640x -o "$results/${name%.*}.mkv"
