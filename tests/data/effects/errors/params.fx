// expect: params.fx(6) : Effect parameter redefinition: fValue
// expect: params.fx(7) : Effect parameter mBad: Invalid number of parameters in initializer for this data type.
// expect: params.fx(8) : Effect parameter fTwo: Invalid number of parameters in initializer for this data type.
// expect: params.fx(9) : Value must be positive.  Got: 0
Float fValue (1.0)
Float fValue (2.0)
Matrix mBad (1.0, 2.0)
Float fTwo (1.0, 2.0)
Float afNone[2 - 2]
Vector vFive (1.0, 2.0, 3.0, 4.0, 5.0)
// expect: Effect parameter vFive: Invalid number of parameters in initializer for this data type.
Int aNegative[-3]
// expect: Value must be positive.  Got: -3
