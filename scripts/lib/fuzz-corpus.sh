# Sourced by the scripts that run fuzz targets.
# shellcheck shell=bash

# prepare_corpus TARGET FOLDER: makes the folder of inputs that a target starts from and adds to, with
# the project's files that are of its form.
prepare_corpus() {
  # shellcheck disable=SC2154 # root is the script's
  local models=$root/tests/models golden=$root/tests/golden
  mkdir -p -- "$2"
  case $1 in
    FuzzCxp) cp -- "$root/examples/yard.cxp" "$golden"/*.cxp "$2" ;;
    FuzzGltf) cp -- "$models"/gltf/*.gl* "$models"/*.gltf "$models"/cubes/*.gltf "$2" ;;
    FuzzObj) cp -- "$models"/*.obj "$models"/*.mtl "$2" ;;
    FuzzSceneFile) cp -- "$golden"/*.scene.json "$2" ;;
  esac
}
