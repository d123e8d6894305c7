// read_spdx DOCUMENT...: reads each document with the library of the SPDX project, writes it again, and checks that nothing is
// lost.
package main

import (
	"bytes"
	"encoding/json"
	"fmt"
	"os"
	"reflect"

	spdxjson "github.com/spdx/tools-golang/json"
)

// lost returns the place of the first value of `original` that `copy` does not have.
func lost(original, copy interface{}, place string) string {
	switch value := original.(type) {
	case map[string]interface{}:
		other, ok := copy.(map[string]interface{})
		if !ok {
			return place
		}
		for name, member := range value {
			// The library leaves out what is false by default.
			if other[name] == nil && member == false {
				continue
			}
			if found := lost(member, other[name], place+"/"+name); found != "" {
				return found
			}
		}
	case []interface{}:
		other, ok := copy.([]interface{})
		if !ok || len(other) != len(value) {
			return place
		}
		for i, member := range value {
			if found := lost(member, other[i], fmt.Sprintf("%s/%d", place, i)); found != "" {
				return found
			}
		}
	default:
		if !reflect.DeepEqual(original, copy) {
			return place
		}
	}
	return ""
}

func check(path string) error {
	content, err := os.ReadFile(path)
	if err != nil {
		return err
	}
	document, err := spdxjson.Read(bytes.NewReader(content))
	if err != nil {
		return err
	}
	var written bytes.Buffer
	if err := spdxjson.Write(document, &written); err != nil {
		return err
	}
	var original, copy interface{}
	if err := json.Unmarshal(content, &original); err != nil {
		return err
	}
	if err := json.Unmarshal(written.Bytes(), &copy); err != nil {
		return err
	}
	if place := lost(original, copy, ""); place != "" {
		return fmt.Errorf("%s is read differently", place)
	}
	fmt.Printf("%s: read back %d packages, %d files, %d relationships\n", path, len(document.Packages), len(document.Files),
		len(document.Relationships))
	return nil
}

func main() {
	for _, path := range os.Args[1:] {
		if err := check(path); err != nil {
			fmt.Fprintf(os.Stderr, "%s: %v\n", path, err)
			os.Exit(1)
		}
	}
}
